#pragma once

#include <string>
#include <string_view>

#include "orv/log/infer/causes.h"
#include "orv/log/infer/note_finder.h"

namespace orv::log {

struct CauseTexts {
    Cause cause;
    std::string_view id;    // name for programs; never changes
    std::string_view what;  // clause such as "the address has no link"
    std::string_view tell;  // how to recognise this cause
    std::string_view advice;
};

const CauseTexts& TextsOf(Cause cause);

// Returns the purpose of wait `step`, such as "looking up the service".
std::string_view StepName(Function function, int step);
// Returns the waits in words, such as "while listing the radios"; empty for no wait.
std::string StepWords(Function function, Steps steps);

struct NoteTexts {
    NoteKind kind;
    std::string_view id;
    std::string_view means;
    std::string_view advice;
};

const NoteTexts& TextsOf(NoteKind kind);

// Returns a sentence, without a full stop, that states what the note reports.
std::string FactsOf(const Note& note);

}  // namespace orv::log
