#pragma once

#include "engine/isolation/descriptor.h"

#include <QtGlobal>

#include <chrono>
#include <span>
#include <utility>

namespace isolation {

using Clock = std::chrono::steady_clock;

/// Two ends of a connection that keeps the bounds of messages.
std::pair<Descriptor, Descriptor> connectedPair();

/// One message in two pieces, with at most one descriptor. False when the other side is gone or takes nothing.
bool send(int socket, std::span<const uchar> head, std::span<const uchar> rest = {}, int descriptor = -1);

struct Received
{
    /// Of the message; 0: the other side is gone; -1: a message that is too long or carries more than one descriptor.
    qsizetype bytes = -1;
    Descriptor descriptor;
};
/// Waits for a message.
Received receive(int socket, std::span<uchar> to);

/// Whether something can be read (the end of the connection counts) before `until`.
bool waitReadable(int socket, Clock::time_point until);

template <class Struct> std::span<const uchar> bytesOfStruct(const Struct &value)
{
    return {reinterpret_cast<const uchar *>(&value), sizeof value};
}

}
