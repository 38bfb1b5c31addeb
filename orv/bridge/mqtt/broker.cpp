#include "orv/bridge/mqtt/broker.h"

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "orv/problem.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr int QualityOfService = 1;
constexpr int KeepAliveSeconds = 15;
constexpr std::chrono::seconds FirstPause = 1s;
constexpr std::chrono::seconds LongestPause = 60s;
constexpr int LoopMs = 1000;
constexpr auto EndWithin = 500ms;
// Maximum number of unconfirmed messages. libmosquitto sends them again after a reconnect.
constexpr std::size_t Window = 256;
constexpr std::size_t LargestPayload = 65536;
// Maximum size of a received packet, including its topic. The broker forwards no larger packets.
constexpr std::uint32_t LargestPacket = LargestPayload + 1024;
constexpr std::size_t ArrivedLimit = 1 << 20;
// Estimated size in bytes of a message without its topic and payload.
constexpr std::size_t MessageOverhead = 128;
// Lowest MQTT reason code that reports a failure.
constexpr int FirstFailure = 128;

std::size_t CostOf(const Message& message) {
    return message.topic.size() + message.payload.size() + MessageOverhead;
}

void Require(int code, const char* what) {
    if (code != MOSQ_ERR_SUCCESS) {
        throw Problem(ExitStatus::FileFailed,
                      std::string("cannot ") + what + ": " + mosquitto_strerror(code) +
                          ". Check --broker, and the files of --ca, --cert and --key");
    }
}

mosquitto* NewClient(const std::string& name, void* self) {
    mosquitto_lib_init();
    return mosquitto_new(name.c_str(), true, self);
}

}  // namespace

Broker::Broker(const BrokerOptions& options, const Message& will)
    : queueLimit(options.queueBytes),
      client(NewClient(options.client, this), [](mosquitto* used) { mosquitto_destroy(used); }) {
    mosquitto* used = client.get();
    Require(used ? MOSQ_ERR_SUCCESS : MOSQ_ERR_NOMEM, "prepare the connection to the broker");
    mosquitto_int_option(used, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_threaded_set(used, true);
    mosquitto_connect_v5_callback_set(used, OnConnect);
    mosquitto_disconnect_v5_callback_set(used, OnDisconnect);
    mosquitto_log_callback_set(used, OnLog);
    mosquitto_publish_v5_callback_set(used, OnPublish);
    mosquitto_message_v5_callback_set(used, OnMessage);
    Require(mosquitto_will_set(used, will.topic.c_str(), static_cast<int>(will.payload.size()),
                               will.payload.data(), QualityOfService, true),
            "set the last will");
    if (!options.user.empty()) {
        Require(mosquitto_username_pw_set(used, options.user.c_str(), options.password.c_str()),
                "set the user");
    }
    if (options.hasTls) {
        UseTls(options);
    }
    worker = std::thread([this, host = options.host, port = options.port] { Run(host, port); });
}

// Cancels the worker thread if it does not end in time: a name lookup or a connect can block it.
Broker::~Broker() {
    mosquitto_disconnect(client.get());
    {
        const Lock lock(mutex);
        isEnding = true;
        changed.notify_all();
        const auto end = std::chrono::steady_clock::now() + EndWithin;
        while (!hasEnded && changed.wait_until(mutex, end) == std::cv_status::no_timeout) {
        }
        if (!hasEnded) {
            pthread_cancel(worker.native_handle());
        }
    }
    worker.join();
    client.reset();
    mosquitto_lib_cleanup();
}

void Broker::UseTls(const BrokerOptions& options) {
    const auto orNull = [](const std::string& text) {
        return text.empty() ? nullptr : text.c_str();
    };
    if (options.authorities.empty()) {
        mosquitto_int_option(client.get(), MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    }
    if (!options.authorities.empty() || !options.certificate.empty()) {
        Require(mosquitto_tls_set(client.get(), orNull(options.authorities),
                                  options.authorities.empty() ? "/etc/ssl/certs" : nullptr,
                                  orNull(options.certificate), orNull(options.key), nullptr),
                "use the certificates");
    }
}

// Reconnects in its own loop, because libmosquitto's loop ends after a TLS or MQTT error.
void Broker::Run(const std::string& host, int port) {
    mosquitto_property* limits = nullptr;
    mosquitto_property_add_int32(&limits, MQTT_PROP_MAXIMUM_PACKET_SIZE, LargestPacket);
    int code = mosquitto_connect_bind_v5(client.get(), host.c_str(), port, KeepAliveSeconds,
                                         nullptr, limits);
    mosquitto_property_free_all(&limits);
    for (;;) {
        while (code == MOSQ_ERR_SUCCESS) {
            code = mosquitto_loop(client.get(), LoopMs, 1);
        }
        if (!Pause(code)) {
            return;
        }
        code = mosquitto_reconnect(client.get());
    }
}

// Waits before the next connect. Returns false if the worker thread must end.
bool Broker::Pause(int code) {
    const Lock lock(mutex);
    inbox.state.isOnline = false;
    inbox.state.reason = !why.empty()             ? why
                         : code == MOSQ_ERR_ERRNO ? strerror(errno)
                                                  : mosquitto_strerror(code);
    if (inbox.state.connections == 0) {
        inbox.state.reason += ". Check the broker's address and the certificates";
    }
    why.clear();
    pause = std::clamp(2 * pause, FirstPause, LongestPause);
    const auto end = std::chrono::steady_clock::now() + pause;
    while (!isEnding && changed.wait_until(mutex, end) == std::cv_status::no_timeout) {
    }
    hasEnded = isEnding;
    changed.notify_all();
    return !hasEnded;
}

void Broker::OnConnect(mosquitto*, void* self, int code, int, const mosquitto_property*) {
    auto* broker = static_cast<Broker*>(self);
    const Lock lock(broker->mutex);
    if (code != 0) {
        broker->why = mosquitto_reason_string(code);
        return;
    }
    broker->inbox.state.isOnline = true;
    broker->inbox.state.reason.clear();
    ++broker->inbox.state.connections;
    broker->why.clear();
    broker->pause = 0s;
}

void Broker::OnDisconnect(mosquitto*, void* self, int code, const mosquitto_property*) {
    auto* broker = static_cast<Broker*>(self);
    const Lock lock(broker->mutex);
    broker->inbox.state.isOnline = false;
    if (code == MQTT_RC_SESSION_TAKEN_OVER) {
        broker->why =
            "another program is connected under the same name: give this gateway its own by "
            "--gateway";
    } else if (code >= FirstFailure) {
        broker->why = mosquitto_reason_string(code);
    }
}

// Stores libmosquitto's error lines, because only they state why TLS failed. They contain no
// payloads.
void Broker::OnLog(mosquitto*, void* self, int level, const char* text) {
    if (level == MOSQ_LOG_ERR) {
        auto* broker = static_cast<Broker*>(self);
        const Lock lock(broker->mutex);
        broker->why = text;
    }
}

void Broker::OnPublish(mosquitto*, void* self, int id, int code, const mosquitto_property*) {
    auto* broker = static_cast<Broker*>(self);
    const Lock lock(broker->mutex);
    broker->inbox.confirmed.emplace_back(id, code);
}

void Broker::OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                       const mosquitto_property* properties) {
    auto* broker = static_cast<Broker*>(self);
    Message copy{message->topic, {}, std::nullopt, message->retain};
    const auto length = static_cast<std::size_t>(message->payloadlen);
    std::uint32_t seconds = 0;
    if (mosquitto_property_read_int32(properties, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL, &seconds,
                                      false)) {
        copy.expirySeconds = seconds;
    }
    const Lock lock(broker->mutex);
    Inbox& inbox = broker->inbox;
    const std::size_t cost = CostOf(copy) + length;
    if (length > LargestPayload || inbox.arrivedBytes + cost > ArrivedLimit) {
        ++inbox.state.refused;
        return;
    }
    if (length > 0) {
        copy.payload.assign(static_cast<const char*>(message->payload), length);
    }
    inbox.arrivedBytes += cost;
    inbox.arrived.push_back(std::move(copy));
}

std::vector<Message> Broker::Step() {
    Inbox taken;
    {
        const Lock lock(mutex);
        taken.state = inbox.state;
        std::swap(taken, inbox);
    }
    const bool isNew = taken.state.connections != state.connections;
    state = taken.state;
    if (isNew) {
        NoticeConnection();
    }
    NoticeConfirmations(taken.confirmed);
    while (state.isOnline && inFlight.size() < Window && PublishNext()) {
    }
    return std::move(taken.arrived);
}

// Publishes all facts (retained messages) and subscribes again, because a restarted broker may have
// lost everything.
void Broker::NoticeConnection() {
    for (const auto& [topic, fact] : facts) {
        waiting.insert(topic);
    }
    for (const std::string& filter : filters) {
        mosquitto_subscribe(client.get(), nullptr, filter.c_str(), QualityOfService);
    }
}

void Broker::NoticeConfirmations(const std::vector<std::pair<int, int>>& confirmed) {
    for (const auto& [id, code] : confirmed) {
        if (const auto message = inFlight.extract(id); message && code >= FirstFailure) {
            Drop(message.mapped(), mosquitto_reason_string(code));
        }
    }
}

void Broker::Retain(const Message& message) {
    Fact& fact = facts[message.topic];
    fact.message = message;
    const bool isWaiting = !waiting.insert(message.topic).second;
    if (message.payload.empty() && isWaiting && !fact.isPublished) {
        // The message was never published, so the broker has nothing to remove.
        waiting.erase(message.topic);
        facts.erase(message.topic);
    }
}

void Broker::Queue(std::uint64_t device, std::uint64_t number, Message message) {
    blockBytes += CostOf(message);
    blocks.push_back({std::move(message), device, number});
    while (blockBytes > queueLimit) {
        blockBytes -= CostOf(blocks.front().message);
        Drop(blocks.front(), "there is no room for more blocks");
        blocks.pop_front();
    }
}

void Broker::Drop(const Block& block, const char* reason) {
    refusal = std::string("messages were dropped: ") + reason;
    if (block.number > 0) {
        Dropped& loss = dropped[block.device];
        const bool continues = loss.blocks > 0 && block.number == loss.last + 1;
        loss.first = continues ? loss.first : block.number;
        loss.last = block.number;
        ++loss.blocks;
        loss.bytes += block.message.payload.size();
    }
}

void Broker::Subscribe(const std::string& filter) {
    if (filters.insert(filter).second && state.isOnline) {
        mosquitto_subscribe(client.get(), nullptr, filter.c_str(), QualityOfService);
    }
}

void Broker::Unsubscribe(const std::string& filter) {
    if (filters.erase(filter) > 0) {
        mosquitto_unsubscribe(client.get(), nullptr, filter.c_str());
    }
}

bool Broker::PublishNext() {
    if (!waiting.empty()) {
        const auto fact = facts.find(*waiting.begin());
        waiting.erase(waiting.begin());
        Publish({fact->second.message, 0, 0}, true);
        fact->second.isPublished = true;
        if (fact->second.message.payload.empty() || fact->second.message.expirySeconds) {
            facts.erase(fact);
        }
        return true;
    }
    if (blocks.empty()) {
        return false;
    }
    blockBytes -= CostOf(blocks.front().message);
    Publish(std::move(blocks.front()), false);
    blocks.pop_front();
    return true;
}

// libmosquitto stores the message until the broker confirms it, also after MOSQ_ERR_NO_CONN.
void Broker::Publish(Block block, bool isRetained) {
    const Message& message = block.message;
    mosquitto_property* properties = nullptr;
    if (message.expirySeconds) {
        mosquitto_property_add_int32(&properties, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL,
                                     *message.expirySeconds);
    }
    int id = 0;
    const int code = mosquitto_publish_v5(
        client.get(), &id, message.topic.c_str(), static_cast<int>(message.payload.size()),
        message.payload.data(), QualityOfService, isRetained, properties);
    mosquitto_property_free_all(&properties);
    if (code == MOSQ_ERR_SUCCESS || code == MOSQ_ERR_NO_CONN) {
        inFlight[id] = std::move(block);
    } else {
        Drop(block, mosquitto_strerror(code));
    }
}

}  // namespace orv::bridge
