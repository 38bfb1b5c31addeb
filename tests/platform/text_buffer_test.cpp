// Tests the buffer for log lines, and the log texts of exceptions.
#include "platform/text_buffer.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "frame/failure_log.h"
#include "platform/failure.h"
#include "quelvixwinlib.h"
#include "tests/support/log_file.h"

namespace orv {
namespace {

TEST(TextBuffer, GrowsWithoutLosingAnything) {
    TextBuffer text;
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        text.Append(std::string_view("ab\0c", 4));
        text.AppendNumber(i * 1001);
        text.Append('/');
        expected += std::string("ab\0c", 4) + std::to_string(i * 1001) + "/";
    }
    EXPECT_EQ(text.View(), expected);
}

TEST(TextBuffer, GrowsBeforeItIsFull) {
    TextBuffer text;
    std::string expected;
    for (int i = 0; i < 2000; ++i) {  // fills the buffer to its end many times
        text.Append(static_cast<char>('a' + i % 26));
        expected += static_cast<char>('a' + i % 26);
        ASSERT_EQ(text.View(), expected);
    }
}

TEST(TextBuffer, WritesEveryNumberInDecimal) {
    TextBuffer text;
    text.AppendNumber(std::numeric_limits<std::int32_t>::min());
    text.Append(' ');
    text.AppendNumber(std::numeric_limits<std::uint64_t>::max());
    text.Append(' ');
    text.AppendNumber(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(text.View(), "-2147483648 18446744073709551615 -9223372036854775808");
}

struct Own : std::exception {
    explicit Own(const char* own) : text(own) {}
    const char* what() const noexcept override { return text; }
    const char* text;
};

struct Thrown {
    const char* name;
    void (*raise)();
    const char* line;
};

const Thrown Failures[] = {
    {"OutOfMemory", [] { throw std::bad_alloc(); }, "Exception: bad allocation"},
    {"RuntimeOutOfMemory", [] { RaiseFailure(E_OUTOFMEMORY); }, "Exception: bad allocation"},
    {"ArrayLength", [] { throw std::bad_array_new_length(); }, "Exception: bad array new length"},
    {"StringLength", [] { std::string().reserve(std::string::npos); },
     "Exception: string too long"},
    {"DequeLength", [] { std::deque<int> deque(std::deque<int>().max_size() + 1); },
     "Exception: deque<T> too long"},
    {"Cast", [] { throw std::bad_cast(); }, "Exception: bad cast"},
    {"Plain", [] { throw std::exception(); }, "Exception: Unknown exception"},
    {"OwnText", [] { throw Own("a text of one's own"); }, "Exception: a text of one's own"},
    {"OtherLength", [] { throw std::length_error("of one's own"); }, "Exception: of one's own"},
    {"StringRange", [] { throw std::out_of_range("basic_string::at: 1 is too far"); },
     "Exception: basic_string::at: 1 is too far"},
    {"NoText", [] { throw Own(nullptr); }, "Exception: error retrieving exception"},
    {"Runtime", [] { RaiseFailure(E_FAIL); }, "Exception: unknown type"},
    {"Number", [] { throw 5; }, "Exception: unknown type"},
};

TEST(LogCurrentException, WritesOneTextOnEveryToolchain) {
    ASSERT_EQ(Logging_Enable(), 0);
    std::vector<std::string> expected;
    LogCurrentException();
    expected.push_back("Exception: none");
    for (const Thrown& row : Failures) {
        try {
            row.raise();
            FAIL() << row.name << " raised nothing";
        } catch (...) {
            LogCurrentException();
        }
        expected.push_back(row.line);
    }
    EXPECT_EQ(LogLines(), expected);
    Logging_Disable();
}

}  // namespace
}  // namespace orv
