// DummyRedbook: decodes an audio or movie file to the sound of a CD and writes it into a FIFO or to standard output.
//
//     DummyRedbook SOURCE FIFO|- [NOTIFICATION]
//
// The framework starts it as a server of sound, too: see SoundProtocol.h.
//
// Exit status: 0 all was written, 1 it could not be, 2 wrong arguments, 3 all was written but something in the source
// was broken and is silent now, 4 the reader went away. Progress is posted as distributed notifications of the given
// name.

#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "platform/quicktime/redbook/ProgressPoster.h"
#include "platform/quicktime/redbook/RedbookOutput.h"
#include "platform/quicktime/redbook/SoundServer.h"
#include "platform/quicktime/redbook/Starter.h"
#include "platform/quicktime/redbook/ToolMessages.h"

#include <QCoreApplication>

#include <array>
#include <csignal>
#include <unistd.h>

using namespace Tessaron;

namespace
{

constexpr ToolMessages messages("DummyRedbook");

constexpr int readerIsGone = 4; // the exit status; the others are those of ToolStatus

constexpr std::size_t framesAtATime = 75;

int statusAfter(RedbookOutput::State state, const RedbookOutput &output)
{
    return state == RedbookOutput::State::ReaderIsGone ? readerIsGone : messages.statusAfter(output.error());
}

int copySound(CDAudioDecoder &decoder, RedbookOutput &output, const QByteArray &source, ProgressPoster &poster)
{
    const Starter starter;
    std::array<char, framesAtATime * CDAudioDecoder::bytesPerFrame> buffer;
    for (;;) {
        const Result<std::size_t> got = decoder.read(buffer.data(), buffer.size() / CDAudioDecoder::bytesPerSample);
        if (!got)
            return messages.statusAfter(got.error());
        if (*got == 0)
            break;
        if (starter.hasEnded())
            return messages.statusAfter(Starter::endedError(source));
        const RedbookOutput::State state = output.write(buffer.data(), *got * CDAudioDecoder::bytesPerSample);
        if (state != RedbookOutput::State::Good)
            return statusAfter(state, output);
        poster.setProgress(decoder.progress());
    }
    poster.setProgress(1);
    if (const RedbookOutput::State state = output.finish(); state != RedbookOutput::State::Good)
        return statusAfter(state, output);
    return messages.statusAfter(decoder.damage());
}

int run(const QByteArray &source, const QByteArray &target, const QString &notification)
{
    // The reader may wait for this end of the pipe: it is opened first, whatever the source turns out to be.
    Result<RedbookOutput> output = RedbookOutput::open(target);
    if (!output)
        return messages.statusAfter(output.error());
    const Result<std::unique_ptr<CDAudioDecoder>> decoder = CDAudioDecoder::openFile(source);
    if (!decoder)
        return messages.statusAfter(decoder.error());
    ProgressPoster poster(notification);
    return copySound(**decoder, *output, source, poster);
}

} // namespace

int main(int argc, char **argv)
{
    // Among what was inherited may be the read end of the very pipe, which would keep it from breaking.
    ::close_range(3, ~0U, 0);
    std::signal(SIGPIPE, SIG_IGN);
    if (argc == 3 && argv[1] == QByteArrayView(SoundProtocol::serveOption)) {
        const bool isServed = argv[2] == QByteArrayView(SoundProtocol::version) && serveSound();
        endTool(isServed ? ToolStatus::written : ToolStatus::wrongArguments);
    }
    if (argc < 3 || argc > 4) {
        messages.say(QStringLiteral("usage: DummyRedbook SOURCE FIFO|- [NOTIFICATION]"));
        return ToolStatus::wrongArguments;
    }
    const QByteArray source(argv[1]), target(argv[2]);
    const QString notification = argc == 4 ? QString::fromLocal8Bit(argv[3]) : QString();
    const QCoreApplication application(argc, argv);
    endTool(run(source, target, notification));
}
