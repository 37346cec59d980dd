#pragma once

#include <QByteArray>
#include <QtEndian>

namespace Tessaron::Testing
{

/// A file of 16-bit stereo sound at 44,100 Hz, all samples of the same value.
inline QByteArray waveOf(int seconds, char sample)
{
    constexpr quint32 samplesPerSecond = 44'100;
    constexpr quint32 bytesPerSample = 4;
    const QByteArray sound(qsizetype(samplesPerSecond * bytesPerSample) * seconds, sample);
    const auto number = [](auto value) {
        QByteArray bytes(qsizetype(sizeof value), '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    const QByteArray format = number(quint16(1)) + number(quint16(2)) + number(samplesPerSecond)
        + number(samplesPerSecond * bytesPerSample) + number(quint16(bytesPerSample)) + number(quint16(16));
    const QByteArray body = QByteArray("WAVEfmt ") + number(quint32(format.size())) + format + "data"
        + number(quint32(sound.size())) + sound;
    return "RIFF" + number(quint32(body.size())) + body;
}

} // namespace Tessaron::Testing
