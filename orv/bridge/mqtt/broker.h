// The connection to an MQTT broker, with a limited queue of data blocks, the latest fact (retained
// message) of each topic, and the received messages.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orv/mutex.h"

struct mosquitto;
struct mosquitto_message;
struct mqtt5__property;

namespace orv::bridge {

struct BrokerOptions {
    std::string host;
    int port = 0;
    bool hasTls = true;
    std::string authorities;  // file of trusted certificates, or empty to use the system's
    std::string certificate;  // file of the client's certificate, or empty
    std::string key;
    std::string user;
    std::string password;
    std::string client;  // MQTT client identifier
    std::size_t queueBytes = 0;
};

struct Message {
    std::string topic;
    std::string payload;
    std::optional<std::uint32_t> expirySeconds{};
    bool wasRetained = false;  // the broker retained it before this program subscribed
};

// Counts the blocks of one device that did not reach the broker in this run.
struct Dropped {
    std::uint64_t first = 0;  // number of the first block in the latest gap
    std::uint64_t last = 0;
    std::uint64_t blocks = 0;
    std::uint64_t bytes = 0;
};

// A separate thread runs the connection and the callbacks. It reconnects after pauses of 1 to 60 s.
// Call all functions from one other thread. They do not block.
class Broker {
  public:
    // The broker publishes and retains `will` if the connection is lost.
    Broker(const BrokerOptions& options, const Message& will);
    ~Broker();
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    // The state of the connection at the last Step.
    struct State {
        bool isOnline = false;
        std::uint64_t connections = 0;
        std::string reason = "no connection to the broker yet";  // empty if online
        std::uint64_t refused = 0;  // rejected incoming messages: too large or too many
    };
    const State& Status() const { return state; }
    // Returns why outgoing messages were dropped in this run, or an empty string.
    const std::string& Refusal() const { return refusal; }
    // Returns true if the broker has confirmed all messages.
    bool IsEmpty() const { return waiting.empty() && blocks.empty() && inFlight.empty(); }

    // Sends queued messages while fewer than 256 are unconfirmed. Returns the received messages.
    std::vector<Message> Step();

    // Publishes a retained message. Repeats it after each reconnect if it has no expiry.
    void Retain(const Message& message);
    // Sends the message now, without the queue.
    void Send(const Message& message) { Publish({message, 0, 0}, false); }
    // Queues a block of a device's bytes; block numbers begin with 1. If the queue is full, drops
    // the oldest blocks.
    void Queue(std::uint64_t device, std::uint64_t number, Message message);
    const Dropped& DroppedOf(std::uint64_t device) { return dropped[device]; }

    void Subscribe(const std::string& filter);
    void Unsubscribe(const std::string& filter);

  private:
    struct Block {
        Message message;
        std::uint64_t device;
        std::uint64_t number;  // number of the block of received bytes; 0 for other messages
    };
    struct Fact {
        Message message;
        bool isPublished = false;
    };
    // The data that the callbacks store for the next Step.
    struct Inbox {
        State state;
        std::vector<Message> arrived;
        std::size_t arrivedBytes = 0;
        std::vector<std::pair<int, int>> confirmed;  // message ids and the broker's reason codes
    };

    static void OnConnect(mosquitto*, void* self, int code, int flags, const mqtt5__property*);
    static void OnDisconnect(mosquitto*, void* self, int code, const mqtt5__property*);
    static void OnLog(mosquitto*, void* self, int level, const char* text);
    static void OnPublish(mosquitto*, void* self, int id, int code, const mqtt5__property*);
    static void OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                          const mqtt5__property* properties);
    void UseTls(const BrokerOptions& options);
    void Run(const std::string& host, int port);
    bool Pause(int code);
    void NoticeConnection();
    void NoticeConfirmations(const std::vector<std::pair<int, int>>& confirmed);
    bool PublishNext();
    void Publish(Block block, bool isRetained);
    void Drop(const Block& block, const char* why);

    const std::size_t queueLimit;
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> client;

    State state;
    std::string refusal;
    std::map<std::string, Fact> facts;
    std::set<std::string> waiting;  // topics of retained messages to publish
    std::deque<Block> blocks;
    std::size_t blockBytes = 0;
    std::map<int, Block> inFlight;  // unconfirmed messages by message id
    std::map<std::uint64_t, Dropped> dropped;
    std::set<std::string> filters;

    Mutex mutex;
    Condition changed;
    Inbox inbox GUARDED_BY(mutex);
    std::string why GUARDED_BY(mutex);  // reason for the latest failure
    std::chrono::seconds pause GUARDED_BY(mutex){0};
    bool isEnding GUARDED_BY(mutex) = false;
    bool hasEnded GUARDED_BY(mutex) = false;
    std::thread worker;  // last member, because it uses all others
};

}  // namespace orv::bridge
