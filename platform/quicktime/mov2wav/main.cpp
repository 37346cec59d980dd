// QrlMov2Wav: converts the sound of an audio or movie file to a WAVE or AIFF file with the samples of a CD.
//
//     QrlMov2Wav SOURCE DESTINATION wave|aiff 44100 [NOTIFICATION]
//
// Exit status: 0 the file is there, 1 it is not, 2 wrong arguments, 3 it is there but something in the source was
// broken and is silent in it. Progress is posted as distributed notifications of the given name.

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "platform/quicktime/mov2wav/PCMFile.h"
#include "platform/quicktime/redbook/ProgressPoster.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace Tessaron;

namespace
{

enum ExitStatus { Written = 0, Failed = 1, WrongArguments = 2, WrittenWithDamage = 3 };

constexpr std::size_t samplesAtATime = CDAudioDecoder::samplesPerSecond;

void say(const QString &text)
{
    const QByteArray line = "QrlMov2Wav: " + text.toUtf8() + '\n';
    std::fputs(line.constData(), stderr);
}

int statusAfter(const NSError &error)
{
    say(displayableText(error.localizedDescription()));
    return Failed;
}

int statusAfter(const AudioDamageReport &damage)
{
    for (const AudioDamage &place : damage.places)
        say(QStringLiteral("at %1 s: %2").arg(place.seconds, 0, 'f', 3).arg(place.what));
    if (damage.count > damage.places.size())
        say(QStringLiteral("and %1 more places like these").arg(damage.count - damage.places.size()));
    return damage.isEmpty() ? Written : WrittenWithDamage;
}

int copySound(CDAudioDecoder &decoder, PCMFile &file, ProgressPoster &poster)
{
    std::vector<char> buffer(samplesAtATime * CDAudioDecoder::bytesPerSample);
    for (;;) {
        const Result<std::size_t> got = decoder.read(buffer.data(), samplesAtATime);
        if (!got)
            return statusAfter(got.error());
        if (*got == 0)
            break;
        if (const NSError error = file.write(buffer.data(), *got * CDAudioDecoder::bytesPerSample))
            return statusAfter(error);
        poster.setProgress(decoder.progress());
    }
    if (const NSError error = file.finish())
        return statusAfter(error);
    poster.setProgress(1);
    return statusAfter(decoder.damage());
}

int convert(const QByteArray &source, const QByteArray &destination, PCMFile::Kind kind, const QString &notification)
{
    const Result<std::unique_ptr<CDAudioDecoder>> decoder = CDAudioDecoder::openFile(source);
    if (!decoder)
        return statusAfter(decoder.error());
    const CDAudioLength length = (*decoder)->length();
    Result<PCMFile> file = PCMFile::create(
        destination, kind, length.isExact ? length.samples * CDAudioDecoder::bytesPerSample : 0, source);
    if (!file)
        return statusAfter(file.error());
    ProgressPoster poster(notification);
    return copySound(**decoder, *file, poster);
}

int run(int argc, char **argv)
{
    const QByteArray format = argc > 3 ? argv[3] : "";
    const bool isKnown = format == "wave" || format == "aiff";
    if (argc < 5 || argc > 6 || !isKnown) {
        say(QStringLiteral("usage: QrlMov2Wav SOURCE DESTINATION wave|aiff 44100 [NOTIFICATION]"));
        return WrongArguments;
    }
    if (QByteArray(argv[4]) != QByteArray::number(CDAudioDecoder::samplesPerSecond)) {
        say(QStringLiteral("the only rate is 44100, not %1").arg(QString::fromLocal8Bit(argv[4])));
        return WrongArguments;
    }
    return convert(argv[1], argv[2], format == "wave" ? PCMFile::Kind::Wave : PCMFile::Kind::AIFF,
                   argc == 6 ? QString::fromLocal8Bit(argv[5]) : QString());
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Qt has options of its own, which are not ours: a source may be named like one.
    int onlyName = argc > 0 ? 1 : 0;
    const QCoreApplication application(onlyName, argv);
    const int status = run(argc, argv);
    // A thread that still waits for a bus must not keep the process, or be there while the rest of it is taken down.
    std::fflush(nullptr);
    ::_exit(status);
}
