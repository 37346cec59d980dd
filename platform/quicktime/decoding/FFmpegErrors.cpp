#include "platform/quicktime/decoding/FFmpegErrors.h"

#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <array>

namespace Tessaron
{

namespace
{

QString textOfCode(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

OSErr statusOfCode(int code)
{
    switch (code) {
    case AVERROR_INVALIDDATA:
    case AVERROR_STREAM_NOT_FOUND:
    case AVERROR_DEMUXER_NOT_FOUND:
        return noMovieFound;
    case AVERROR_DECODER_NOT_FOUND:
    case AVERROR_ENCODER_NOT_FOUND:
    case AVERROR_PATCHWELCOME:
        return noCodecErr;
    case AVERROR_EOF:
        return eofErr;
    case AVERROR_EXIT:
        return userCanceledErr;
    default:
        return code < 0 && code > -4096 ? statusForErrno(AVUNERROR(code)) : ioErr;
    }
}

} // namespace

NSError mediaErrorOfCode(int code, const QByteArray &path, const QString &deed)
{
    if (code == AVERROR_EXIT)
        return mediaCancelledError(path);
    const OSErr status = statusOfCode(code);
    if (status == noMovieFound)
        return mediaError(status, path, QStringLiteral("it holds no sound or movie in a form that can be read"),
                          QStringLiteral("Choose another file, or convert it to WAVE, AIFF or FLAC."));
    return mediaError(status, path, QStringLiteral("%1 failed: %2").arg(deed, textOfCode(code)),
                      QStringLiteral("Check that the file plays in another program, or convert it first."));
}

} // namespace Tessaron
