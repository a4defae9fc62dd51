#pragma once

#include "engine/isolation/answer.h"

namespace isolation {

struct Question
{
    Work work;
    /// All: the built-in codec that knows the content, then the others in a process of their own. BuiltIn: only that
    /// one.
    Codecs codecs;
    DecodeHint hint;
};

/// The answer of a decoder process; whatever befalls the process becomes a reason in it. Nothing: the work is to be
/// done in this process, because no others were started or can be.
std::optional<Answer> ask(const Question &question, const EncodedFile &file);

}
