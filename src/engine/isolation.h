#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// The process boundary behind which decode(), probe() and readTexts() do their work, so that a hostile file harms
/// nobody: what happens to a decoder process is answered with a Failure, and the next picture gets another one.
///
/// LUMORA_DECODER=inprocess leaves the boundary out, for debugging; =debug lets the decoder processes write to the
/// program's standard error; =strict ends them at the first call of the system that their filter does not know, so that
/// a developer sees which one is missing.

struct DecoderOptions
{
    /// The program of the decoder processes; empty: `lumora-decoder` beside the modules.
    QByteArray program;
    /// The folder with their modules; empty: where this process finds its own.
    QByteArray modules;
    /// How long one request may take; zero: limits::decodeSeconds().
    std::chrono::milliseconds patience{0};
};

/// From now on decoding is done in other processes. Returns at once; the first request waits until they stand. Called
/// before anything else of the program, from any thread; a second call changes nothing.
void startDecoderProcesses(const DecoderOptions &options = {});

/// Ends all of them. Requests under way and later ones fail until the next start.
void stopDecoderProcesses();

/// Whether decoding is done in other processes, or will be as soon as they stand.
bool decoderProcessesRun();

/// One sentence for the log and the developers: which layers of protection are in force.
QString decoderProtection();
