// The library against its reference on random calls and events; a difference is shrunk to the
// shortest sequence that shows it.
#include "tests/reliability/model.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdlib>
#include <sstream>

namespace orv::model {

void showValue(const Command& command, std::ostream& out) {
    out << Text(command);
}

namespace {

// Longer in a nightly run.
int Steps() {
    const char* steps = std::getenv("ORV_MODEL_STEPS");
    return steps ? std::atoi(steps) : 20000;
}

// Of full range from the first sequence on.
rc::Gen<std::uint8_t> Below(int limit) {
    return rc::gen::resize(rc::kNominalSize,
                           rc::gen::cast<std::uint8_t>(rc::gen::inRange(0, limit)));
}

rc::Gen<Command> AnyCommand() {
    return rc::gen::construct<Command>(Below(CommandCount), Below(256), Below(256),
                                       rc::gen::resize(24, rc::gen::container<Bytes>(Below(256))));
}

// RC_PARAMS="seed=..." replaces the fixed seed.
TEST(Model, LibraryDoesWhatTheReferenceSays) {
    constexpr int MeanLength = 50;
    auto parameters = rc::detail::configuration().testParams;
    parameters.seed = std::getenv("RC_PARAMS") ? parameters.seed : 1;
    parameters.maxSuccess = Steps() / MeanLength;
    int steps = 0;
    const auto sequences =
        rc::gen::resize(2 * MeanLength, rc::gen::container<std::vector<Command>>(AnyCommand()));
    const auto property = [&] {
        Model model;
        for (const Command& command : *sequences) {
            model.Run(command);
            ++steps;
        }
        model.Finish();
    };
    const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), parameters);
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << text.str();
    std::printf("%d steps\n", steps);
}

}  // namespace
}  // namespace orv::model
