// A reference model of the library, which predicts the result, log lines, effects and duration of
// every call.
#pragma once

#include <cstdint>
#include <string>

#include "tests/reliability/model/comparison.h"
#include "tests/reliability/model/reference.h"

namespace orv::model {

// A call or an event. Every value of every field is valid. The function that runs the command
// defines the meaning of `a`, `b` and `bytes`.
struct Command {
    std::uint8_t what;
    std::uint8_t a;
    std::uint8_t b;
    Bytes bytes;
};

#define ORV_COMMANDS(of)                                                                          \
    of(AskAvailable) of(SetMachine) of(Initialize) of(Deinitialize) of(Start) of(Stop)            \
        of(CountDevices) of(ReadDevice) of(Connect) of(Disconnect) of(Send) of(Receive) of(Flush) \
            of(SwitchLog) of(AppendLine) of(SetName) of(SetSections) of(Advertise) of(Notify)     \
                of(Arrange) of(Break)
#define ORV_COMMAND(name) name,
enum What : std::uint8_t { ORV_COMMANDS(ORV_COMMAND) CommandCount };

std::string Text(const Command& command);

// Runs commands in the library and the reference, and throws std::runtime_error if the results
// differ. At construction, the library must have no sessions or links. The destructor removes all
// sessions and links.
class Model {
  public:
    Model();
    ~Model();
    void Run(const Command& command);
    // Compares all sessions and links with the reference, removes them, and checks that all objects
    // were released.
    void Finish();

  private:
    Reference reference;
    LogComparison log;
};

}  // namespace orv::model
