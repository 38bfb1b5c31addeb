// Compares the library with the reference model in random sequences of calls and events.
#include "tests/reliability/model/model.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdlib>
#include <sstream>

namespace orv::model {

void showValue(const Command& command, std::ostream& out) {
    out << Text(command);
}

namespace {

int Steps() {
    const char* steps = std::getenv("ORV_MODEL_STEPS");
    return steps ? std::atoi(steps) : 20000;
}

// Generates numbers below `limit`. Without resize, rapidcheck would begin with small numbers.
rc::Gen<std::uint8_t> Below(int limit) {
    return rc::gen::resize(rc::kNominalSize,
                           rc::gen::cast<std::uint8_t>(rc::gen::inRange(0, limit)));
}

// Runs `opening` and then random commands, many times. `what` generates the kinds of the commands.
// RC_PARAMS="seed=..." replaces the fixed seed.
void CheckSequences(const rc::Gen<std::uint8_t>& what, const std::vector<Command>& opening) {
    constexpr int MeanLength = 50;
    auto parameters = rc::detail::configuration().testParams;
    parameters.seed = std::getenv("RC_PARAMS") ? parameters.seed : 1;
    parameters.maxSuccess = Steps() / MeanLength;
    int steps = 0;
    const auto command = rc::gen::construct<Command>(
        what, Below(256), Below(256), rc::gen::resize(24, rc::gen::container<Bytes>(Below(256))));
    const auto sequences =
        rc::gen::resize(2 * MeanLength, rc::gen::container<std::vector<Command>>(command));
    const auto property = [&] {
        Model model;
        for (const std::vector<Command>& part : {opening, *sequences}) {
            for (const Command& each : part) {
                model.Run(each);
                ++steps;
            }
        }
        model.Finish();
    };
    const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), parameters);
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << text.str();
    std::printf("%d steps\n", steps);
}

TEST(Model, LibraryMatchesTheReference) {
    CheckSequences(Below(CommandCount), {});
}

TEST(Model, LibraryMatchesTheReferenceForPackets) {
    CheckSequences(rc::gen::element<std::uint8_t>(SetName, SetSections, SetSections, Advertise,
                                                  Advertise, ReadDevice),
                   {{Initialize, 0, 0, {}}, {Start, 1, 0, {}}});
}

// For each platform operation and each answer: opens a link, sets the answer, runs the exports, and
// runs them again with the operation's default answer.
TEST(Model, LibraryMatchesTheReferenceForEachAnswer) {
    for (std::uint8_t operation = 0; operation <= OrvOperation_WriteValue; ++operation) {
        for (std::uint8_t answer = 0; answer < 56; ++answer) {  // 14 answers with 4 statuses each
            const auto target = static_cast<std::uint8_t>(4 * operation);
            SCOPED_TRACE(Text({Arrange, target, answer, {}}));
            Model model;
            const auto run = [&](std::uint8_t what, const Bytes& bytes = {}) {
                EXPECT_NO_THROW(model.Run({what, 0, 0, bytes})) << Text({what, 0, 0, {}});
            };
            run(Connect);
            run(Notify, {7, 8, 9});
            model.Run({Arrange, target, answer, {}});
            for (const What what : {AskAvailable, Connect, Send, Disconnect, Flush}) {
                run(what, {1, 2});
            }
            model.Run({Arrange, target, 0, {}});
            for (const What what : {AskAvailable, Connect, Send}) {
                run(what);
            }
            EXPECT_NO_THROW(model.Finish());
            ASSERT_EQ(OrvWorld_OpenObjects(Addresses[0]), 0);
        }
    }
}

}  // namespace
}  // namespace orv::model
