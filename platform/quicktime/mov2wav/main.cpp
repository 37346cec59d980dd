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
#include "platform/quicktime/redbook/ToolMessages.h"

#include <QCoreApplication>

#include <csignal>
#include <vector>

using namespace Tessaron;

namespace
{

constexpr ToolMessages messages("QrlMov2Wav");

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

int copySound(CDAudioDecoder &decoder, PCMFile &file, const QByteArray &source, ProgressPoster &poster)
{
    const Starter starter;
    std::vector<char> buffer(samplesAtATime * CDAudioDecoder::bytesPerSample);
    for (;;) {
        const Result<std::size_t> got = decoder.read(buffer.data(), samplesAtATime);
        if (!got)
            return messages.statusAfter(got.error());
        if (*got == 0)
            break;
        if (starter.hasEnded())
            return messages.statusAfter(Starter::endedError(source));
        if (const NSError error = file.write(buffer.data(), *got * CDAudioDecoder::bytesPerSample))
            return messages.statusAfter(error);
        poster.setProgress(decoder.progress());
    }
    if (const NSError error = file.finish())
        return messages.statusAfter(error);
    poster.setProgress(1);
    return messages.statusAfter(decoder.damage());
}

int convert(const Order &order)
{
    const Result<std::unique_ptr<CDAudioDecoder>> decoder =
        CDAudioDecoder::openFile(order.source, {}, {.rate = order.form.samplesPerSecond});
    if (!decoder)
        return messages.statusAfter(decoder.error());
    const CDAudioLength length = (*decoder)->length();
    Result<PCMFile> file =
        PCMFile::create(order.destination, order.kind, order.form,
                        length.isExact ? length.samples * CDAudioDecoder::bytesPerSample : 0, order.source);
    if (!file)
        return messages.statusAfter(file.error());
    ProgressPoster poster(order.notification);
    return copySound(**decoder, *file, order.source, poster);
}

int run(int argc, char **argv)
{
    const QByteArray format = argc > 3 ? argv[3] : "";
    const bool isKnown = format == "wave" || format == "aiff";
    if (argc < 5 || argc > 6 || !isKnown) {
        messages.say(QStringLiteral("usage: QrlMov2Wav SOURCE DESTINATION wave|aiff RATE [NOTIFICATION]"));
        return ToolStatus::wrongArguments;
    }
    const QByteArray rateText(argv[4]);
    bool isNumber = false;
    const unsigned int rate = rateText.toUInt(&isNumber);
    if (!isNumber || rate < lowestRate || rate > highestRate) {
        messages.say(QStringLiteral("%1 is not a rate; use a number of samples a second from %2 to %3")
                         .arg(displayableText(QString::fromLocal8Bit(rateText)))
                         .arg(lowestRate)
                         .arg(highestRate));
        return ToolStatus::wrongArguments;
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
    endTool(run(argc, argv));
}
