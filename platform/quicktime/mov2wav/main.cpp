// QrlMov2Wav: converts the sound of an audio or movie file to a WAVE or AIFF file of two channels with 16 bits.
//
//     QrlMov2Wav SOURCE DESTINATION wave|aiff RATE [NOTIFICATION]
//
// RATE is how many samples a second the result has, 44100 for that of a CD. A WAVE file that is longer than 4 GiB is an
// RF64 file; one of AIFF cannot be longer than 2 GiB.
//
// Exit status: 0 the file is there, 1 it is not, 2 wrong arguments, 3 it is there but something in the source was
// broken and is silent in it. Progress is posted as distributed notifications of the given name.

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "platform/quicktime/mov2wav/PCMFile.h"
#include "platform/quicktime/redbook/ProgressPoster.h"
#include "platform/quicktime/redbook/Starter.h"

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
// What there are files of, from telephones to the masters of studios.
constexpr unsigned int lowestRate = 8000, highestRate = 384000;

struct Order {
    QByteArray source;
    QByteArray destination;
    PCMFile::Kind kind = PCMFile::Kind::Wave;
    PCMForm form;
    QString notification;
};

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

int copySound(CDAudioDecoder &decoder, PCMFile &file, const QByteArray &source, ProgressPoster &poster)
{
    const Starter starter;
    std::vector<char> buffer(samplesAtATime * CDAudioDecoder::bytesPerSample);
    for (;;) {
        const Result<std::size_t> got = decoder.read(buffer.data(), samplesAtATime);
        if (!got)
            return statusAfter(got.error());
        if (*got == 0)
            break;
        if (starter.hasEnded())
            return statusAfter(Starter::endedError(source));
        if (const NSError error = file.write(buffer.data(), *got * CDAudioDecoder::bytesPerSample))
            return statusAfter(error);
        poster.setProgress(decoder.progress());
    }
    if (const NSError error = file.finish())
        return statusAfter(error);
    poster.setProgress(1);
    return statusAfter(decoder.damage());
}

int convert(const Order &order)
{
    const Result<std::unique_ptr<CDAudioDecoder>> decoder =
        CDAudioDecoder::openFile(order.source, {}, {.rate = order.form.samplesPerSecond});
    if (!decoder)
        return statusAfter(decoder.error());
    const CDAudioLength length = (*decoder)->length();
    Result<PCMFile> file =
        PCMFile::create(order.destination, order.kind, order.form,
                        length.isExact ? length.samples * CDAudioDecoder::bytesPerSample : 0, order.source);
    if (!file)
        return statusAfter(file.error());
    ProgressPoster poster(order.notification);
    return copySound(**decoder, *file, order.source, poster);
}

int run(int argc, char **argv)
{
    const QByteArray format = argc > 3 ? argv[3] : "";
    const bool isKnown = format == "wave" || format == "aiff";
    if (argc < 5 || argc > 6 || !isKnown) {
        say(QStringLiteral("usage: QrlMov2Wav SOURCE DESTINATION wave|aiff RATE [NOTIFICATION]"));
        return WrongArguments;
    }
    const QByteArray rateText(argv[4]);
    bool isNumber = false;
    const unsigned int rate = rateText.toUInt(&isNumber);
    if (!isNumber || rate < lowestRate || rate > highestRate) {
        say(QStringLiteral("%1 is no rate; use a number of samples a second from %2 to %3")
                .arg(displayableText(QString::fromLocal8Bit(rateText)))
                .arg(lowestRate)
                .arg(highestRate));
        return WrongArguments;
    }
    return convert({argv[1], argv[2], format == "wave" ? PCMFile::Kind::Wave : PCMFile::Kind::AIFF, PCMForm{rate, 2},
                    argc == 6 ? QString::fromLocal8Bit(argv[5]) : QString()});
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
