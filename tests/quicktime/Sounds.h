#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace Tessaron::Testing
{

/// Interleaved samples of 16 bits.
using Samples = std::vector<std::int16_t>;

/// A sine of another pitch in each channel, at a level from 0 to 1.
Samples tone(std::size_t count, int channels = 2, int rate = 44100, double level = 0.5);
/// The same numbers each time.
Samples noise(std::size_t count, int channels = 2);

/// A WAVE file of these samples.
QByteArray waveFile(const Samples &samples, int channels = 2, int rate = 44100);
/// A WAVE file of IEEE floats: a sine of 997 Hz in both channels.
QByteArray waveFileOfSine(std::size_t count, int rate, double level);

/// Runs a program of the suite's packages, which must succeed; its standard output.
QByteArray outputOfProgram(const char *program, const QList<QByteArray> &arguments);
/// The same for ffmpeg: options and files, as in "-i in.wav -c:a aac out.m4a", parted at blanks.
QByteArray ffmpeg(const QByteArray &arguments);

/// Processes that this thread has started and that still run.
QList<int> childrenOfThisThread();

/// A sound as ffmpeg decodes it to the form of a CD: by soxr where it must resample, without dither. A filter, with
/// a comma behind it, comes first.
Samples decodedByFFmpeg(const QByteArray &path, const QByteArray &filter = {});

/// Samples out of their bytes.
Samples samplesOf(const QByteArray &bytes);

/// The greatest difference of two samples at the same place, up to the end of the shorter one.
int greatestDifference(const Samples &one, const Samples &other);

/// Everything in the left channel that is not a sine of 997 Hz, against that sine, in decibels. The edges, where
/// filters swing in, are left out.
double noiseBesideSine(const Samples &stereo);

/// A power spectrum of a part of the left channel, `size` a power of two; element k stands for k × 44100 / size Hz.
std::vector<double> powerSpectrum(const Samples &stereo, std::size_t first, std::size_t size);

} // namespace Tessaron::Testing
