#include "tests/radio/test_bed.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/radio/host.h"

namespace orv::radio {

Child::Child(const std::vector<std::string>& command) {
    int in[2];
    int out[2];
    if (pipe(in) != 0 || pipe(out) != 0) {
        abort();
    }
    id = fork();
    if (id == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // ends the child if the test crashes
        dup2(in[0], 0);
        dup2(out[1], 1);
        for (const int end : {in[0], in[1], out[0], out[1]}) {
            close(end);
        }
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    input = in[1];
    output = fdopen(out[0], "r");
}

Child::~Child() {
    Kill();
    close(input);
    fclose(output);
}

void Child::Kill() {
    if (id > 0) {
        kill(id, SIGKILL);
        waitpid(id, nullptr, 0);
        id = -1;
    }
}

bool Child::HasDied() {
    if (id > 0 && waitpid(id, nullptr, WNOHANG) == id) {
        id = -1;
    }
    return id < 0;
}

std::string Child::Ask(const std::string& line) {
    const std::string sent = line + "\n";
    char answer[1000] = "";
    if (write(input, sent.data(), sent.size()) != static_cast<ssize_t>(sent.size()) ||
        fgets(answer, sizeof answer, output) == nullptr) {
        return {};
    }
    std::string text = answer;
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

TestBed& TestBed::Get() {
    static TestBed* const testBed = new TestBed;
    return *testBed;
}

TestBed::TestBed() {
    signal(SIGPIPE, SIG_IGN);
    StartControllers();
    StartDaemon();
    peripherals = std::make_unique<Child>(
        std::vector<std::string>{"python3", "peripheral.py", "hci1", "hci3"});
    Appear();
}

void TestBed::StartControllers() {
    controllers = std::make_unique<Child>(std::vector<std::string>{"btvirt", "-l4"});
}

void TestBed::KillControllers() {
    controllers.reset();
}

void TestBed::StartDaemon() {
    daemon = std::make_unique<Child>(std::vector<std::string>{
        "sh", "-c", "exec /usr/libexec/bluetooth/bluetoothd -n 2>>bluetoothd.log"});
}

void TestBed::Repair() {
    if (daemon->HasDied()) {
        std::printf("CRASHED bluetoothd\n");
        StartDaemon();
        Appear();
    }
}

void TestBed::KillDaemon() {
    daemon.reset();
}

void TestBed::Appear() {
    for (const char* command : {"power hci0 on", "power hci2 on", "appear 0"}) {
        ASSERT_TRUE(Await([&] { return Ask(command) == "ok"; })) << command << ": " << Ask(command);
    }
}

void TestBed::Do(const std::string& command) {
    ASSERT_EQ(Ask(command), "ok") << command;
}

std::string TestBed::Ask(const std::string& command) {
    return peripherals->Ask(command);
}

}  // namespace orv::radio
