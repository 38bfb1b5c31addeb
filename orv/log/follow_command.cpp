#include "orv/log/follow_command.h"

#include "orv/log/follower.h"
#include "orv/log/text_printer.h"
#include "orv/terminal/terminal.h"

namespace orv::log {

namespace {

constexpr int PollMs = 100;

struct Printing : Listener {
    explicit Printing(TextPrinter& to) : printer(to) {}
    void OnCall(const Call& call) override { printer.Print(call); }
    void OnNote(const Note& note) override { printer.Print(note); }
    TextPrinter& printer;
};

}  // namespace

void FollowLog(const std::string& path, Threads threads) {
    terminal::CatchInterrupts();
    TextPrinter printer(stdout, terminal::IsOutput());
    Printing printing(printer);
    Follower follower(path, threads, printing);
    do {
        const bool emptied = follower.Poll() == Follower::Found::Emptied;
        printer.Flush();
        if (emptied) {
            printer.PrintLine("The log was emptied.");
        }
    } while (terminal::Pause(PollMs));
    follower.End();
    printer.Flush();
}

}  // namespace orv::log
