// Text on its way into the log: growth, numbers, UTF-16, and the texts of failures.
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "frame/failure_log.h"
#include "platform/failure.h"
#include "platform/strings.h"
#include "quelvixwinlib.h"
#include "tests/support/log_file.h"

namespace orv {
namespace {

TEST(Text, GrowsWithoutLosingAnything) {
    Text text;
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        text.Append(std::string_view("ab\0c", 4));
        text.AppendNumber(i * 1001);
        text.Append('/');
        expected += std::string("ab\0c", 4) + std::to_string(i * 1001) + "/";
    }
    EXPECT_EQ(text.View(), expected);
}

TEST(Text, WritesEveryNumberInDecimal) {
    Text text;
    text.AppendNumber(std::numeric_limits<std::int32_t>::min());
    text.Append(' ');
    text.AppendNumber(std::numeric_limits<std::uint64_t>::max());
    text.Append(' ');
    text.AppendNumber(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(text.View(), "-2147483648 18446744073709551615 -9223372036854775808");
}

struct Conversion {
    const char* name;
    std::u16string utf16;
    std::string utf8;
};

const Conversion Conversions[] = {
    {"Nothing", u"", ""},
    {"Ascii", u"ORV-0042", "ORV-0042"},
    {"Zero", std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
    {"LastOfOneTwoThree", u"\u007F\u0080\u07FF\u0800\uFFFF",
     "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
    {"FirstAndLastPair", u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {"LoneHigh", u"\xD83Dx", "\xEF\xBF\xBDx"},
    {"LoneLow", u"\xDC00x", "\xEF\xBF\xBDx"},
    {"HighAtTheEnd", u"x\xDBFF", "x\xEF\xBF\xBD"},
    {"HighBeforePair", u"\xD83D\xD83D\xDE00", "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
    {"PairBackwards", u"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD"},
};

TEST(RuntimeString, BecomesWellFormedUtf8) {
    for (const Conversion& row : Conversions) {
        RuntimeString string;
        ASSERT_EQ(WindowsCreateString(row.utf16.data(), static_cast<UINT32>(row.utf16.size()),
                                      string.Put()),
                  S_OK);
        Text text;
        string.AppendUtf8To(text);
        EXPECT_EQ(text.View(), row.utf8) << row.name;
    }
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
