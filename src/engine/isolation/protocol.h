#pragma once

#include "engine/decodehere.h"

#include <QtGlobal>

#include <array>

/// What the program, its zygotes and the decoder processes say to each other: messages of a fixed layout, the same
/// version of the program on both sides.
namespace isolation {

/// Quick: the built-in codecs, many files a process. Full: the module too, one file a process.
enum class Family { Quick, Full };
constexpr int filesOf(Family family)
{
    return family == Family::Quick ? 64 : 1;
}

enum class Kind : quint32 { Hello = 0x4c5a0001, Fork, Forked, End, Ended, Ready, Request, Need, Arena, Done, Piece };

/// A whole message in the program's direction and back; larger things go in pieces or through an arena.
inline constexpr qsizetype largestMessage = 48 * 1024;
/// The first page of an arena for pixels: how many rows are finished. The pixels follow.
inline constexpr qint64 arenaHeader = 4096;
/// Larger pictures are announced before they are decoded, so that the program copies while the process decodes.
inline constexpr qint64 announcedBytes = 2 * 1024 * 1024;

struct Hello
{
    Kind kind = Kind::Hello;
    std::array<char, 28> version{};
};

struct ZygoteRequest
{
    Kind kind; ///< Fork with one end of a connection, or End
    qint32 pid = 0;
    qint32 grace = 0; ///< milliseconds until a process that has not ended by itself is ended
};

struct ZygoteAnswer
{
    Kind kind; ///< Forked, Ended
    qint32 pid = 0; ///< 0: could not be started
    qint32 signal = 0;
    qint32 exitCode = 0;
};

/// The layers of protection a process has put around itself.
enum Layer : quint32 { Limits = 1, NoNewPrivileges = 2, FileRules = 4, CallFilter = 8 };

struct Ready
{
    Kind kind = Kind::Ready;
    quint32 layers = 0;
};

enum class Work : quint32 { Decode, Probe, ReadTexts };

struct Request
{
    Kind kind = Kind::Request;
    Work work = Work::Decode;
    Codecs codecs = Codecs::All;
    qint32 targetWidth = 0;
    qint32 targetHeight = 0;
    qint32 sizeIndex = 0;
    qint32 page = 0;
    quint32 extensionLength = 0;
    std::array<char16_t, 16> extension{}; ///< a longer one is no codec's
    qint64 inputBytes = 0;
    qint64 companionBytes = 0; ///< the last ones of the input are the file's companion
    qint64 arenaBytes = 0; ///< the input lies in the arena of that size; 0: it follows here
    quint32 bringsArena = 0;
};

struct Need
{
    Kind kind = Kind::Need;
    qint32 width = 0;
    qint32 height = 0;
    quint32 format = 0;
};

struct ArenaGiven
{
    Kind kind = Kind::Arena;
    quint32 bringsArena = 0;
    qint64 bytes = 0; ///< 0: refused
};

enum Field { CodecName, Reason, ColorTable, IccProfile, Exif, Iptc, Xmp, Comment, Texts, Pixels, FieldCount };

struct Done
{
    Kind kind = Kind::Done;
    quint32 succeeded = 0;
    quint32 partial = 0;
    quint32 inArena = 0; ///< the pixels lie in the arena, in the layout announced last
    quint32 rowsAreFinal = 0; ///< and what was published of them while decoding is final
    qint32 width = 0;
    qint32 height = 0;
    quint32 format = 0;
    qint32 dotsPerMeterX = 0;
    qint32 dotsPerMeterY = 0;
    qint32 fileWidth = 0;
    qint32 fileHeight = 0;
    qint32 bitsPerPixel = 0;
    qint32 pageCount = 0;
    std::array<quint32, FieldCount> lengths{}; ///< bytes; the fields follow one another, in this and in Piece messages
};

}
