#include "tests/quicktime/Sounds.h"

#include "tests/support/RunProgram.h"

#include <QFile>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstring>
#include <gtest/gtest.h>
#include <numbers>
#include <random>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr double pi = std::numbers::pi;

QByteArray waveHeader(int format, int channels, int rate, int bytesPerSample, std::size_t dataSize)
{
    QByteArray header;
    const auto append = [&header](std::uint32_t value, int size) {
        header.append(reinterpret_cast<const char *>(&value), size);
    };
    header += "RIFF";
    append(std::uint32_t(36 + dataSize), 4);
    header += "WAVEfmt ";
    append(16, 4);
    append(std::uint32_t(format), 2);
    append(std::uint32_t(channels), 2);
    append(std::uint32_t(rate), 4);
    append(std::uint32_t(rate * channels * bytesPerSample), 4);
    append(std::uint32_t(channels * bytesPerSample), 2);
    append(std::uint32_t(8 * bytesPerSample), 2);
    header += "data";
    append(std::uint32_t(dataSize), 4);
    return header;
}

void transform(std::vector<std::complex<double>> &values)
{
    const std::size_t size = values.size();
    if (size == 1)
        return;
    std::vector<std::complex<double>> even(size / 2), odd(size / 2);
    for (std::size_t index = 0; index < size / 2; ++index) {
        even[index] = values[2 * index];
        odd[index] = values[2 * index + 1];
    }
    transform(even);
    transform(odd);
    for (std::size_t index = 0; index < size / 2; ++index) {
        const auto turned = std::polar(1.0, -2 * pi * double(index) / double(size)) * odd[index];
        values[index] = even[index] + turned;
        values[index + size / 2] = even[index] - turned;
    }
}

} // namespace

Samples tone(std::size_t count, int channels, int rate, double level)
{
    Samples samples;
    samples.reserve(count * std::size_t(channels));
    for (std::size_t index = 0; index < count; ++index) {
        for (int channel = 0; channel < channels; ++channel) {
            const double angle = 2 * pi * (440 + 111 * channel) * double(index) / rate;
            samples.push_back(std::int16_t(std::lround(32767 * level * std::sin(angle))));
        }
    }
    return samples;
}

Samples noise(std::size_t count, int channels)
{
    std::minstd_rand random(1);
    Samples samples(count * std::size_t(channels));
    for (std::int16_t &sample : samples)
        sample = std::int16_t(int(random() % 40000) - 20000);
    return samples;
}

QByteArray waveFile(const Samples &samples, int channels, int rate)
{
    const std::size_t size = samples.size() * sizeof(std::int16_t);
    return waveHeader(1, channels, rate, 2, size)
        + QByteArray(reinterpret_cast<const char *>(samples.data()), qsizetype(size));
}

QByteArray waveFileOfSine(std::size_t count, int rate, double level)
{
    std::vector<float> samples;
    for (std::size_t index = 0; index < count; ++index) {
        const auto value = float(level * std::sin(2 * pi * 997 * double(index) / rate));
        samples.insert(samples.end(), 2, value);
    }
    const std::size_t size = samples.size() * sizeof(float);
    return waveHeader(3, 2, rate, 4, size)
        + QByteArray(reinterpret_cast<const char *>(samples.data()), qsizetype(size));
}

QByteArray outputOfProgram(const char *program, const QList<QByteArray> &arguments)
{
    const ProgramRun run = runProgram(program, arguments);
    EXPECT_EQ(run.status, 0) << program << ", a package of the tests: " << arguments.join(' ').constData() << '\n'
                             << run.errors.constData();
    return run.output;
}

QByteArray ffmpeg(const QByteArray &arguments)
{
    const QList<QByteArray> common = {"-hide_banner", "-nostdin", "-loglevel", "error", "-y"};
    return outputOfProgram("ffmpeg", common + arguments.simplified().split(' '));
}

Samples decodedByFFmpeg(const QByteArray &path, const QByteArray &filter)
{
    return samplesOf(ffmpeg("-i " + path + " -map 0:a:0 -af " + filter
                            + "aresample=44100:resampler=soxr:precision=28:isf=fltp -f s16le -ac 2 -ar 44100 -"));
}

QList<int> childrenOfThisThread()
{
    QFile file(QStringLiteral("/proc/self/task/%1/children").arg(::gettid()));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QList<int> numbers;
    for (const QByteArray &word : file.readAll().simplified().split(' ')) {
        if (!word.isEmpty())
            numbers << word.toInt();
    }
    return numbers;
}

Samples samplesOf(const QByteArray &bytes)
{
    Samples samples(std::size_t(bytes.size()) / 2);
    if (!samples.empty()) // without samples there is no address to copy to
        std::memcpy(samples.data(), bytes.constData(), samples.size() * 2);
    return samples;
}

int greatestDifference(const Samples &one, const Samples &other)
{
    int greatest = 0;
    for (std::size_t index = 0; index < std::min(one.size(), other.size()); ++index)
        greatest = std::max(greatest, std::abs(one[index] - other[index]));
    return greatest;
}

double noiseBesideSine(const Samples &stereo)
{
    // The sine that fits best is taken away: what is left is noise and distortion.
    const std::size_t edge = 4410, count = stereo.size() / 2 - 2 * edge;
    double ss = 0, cc = 0, sc = 0, sy = 0, cy = 0;
    const auto angleAt = [](std::size_t index) { return 2 * pi * 997 * double(index) / 44100; };
    for (std::size_t index = edge; index < edge + count; ++index) {
        const double s = std::sin(angleAt(index)), c = std::cos(angleAt(index)), y = stereo[2 * index];
        ss += s * s, cc += c * c, sc += s * c, sy += s * y, cy += c * y;
    }
    const double determinant = ss * cc - sc * sc;
    const double a = (sy * cc - cy * sc) / determinant, b = (cy * ss - sy * sc) / determinant;
    double rest = 0;
    for (std::size_t index = edge; index < edge + count; ++index) {
        const double sine = a * std::sin(angleAt(index)) + b * std::cos(angleAt(index));
        rest += (stereo[2 * index] - sine) * (stereo[2 * index] - sine);
    }
    return 10 * std::log10(rest / double(count) / ((a * a + b * b) / 2));
}

std::vector<double> powerSpectrum(const Samples &stereo, std::size_t first, std::size_t size)
{
    EXPECT_TRUE(std::has_single_bit(size));
    std::vector<std::complex<double>> values(size);
    for (std::size_t index = 0; index < size; ++index) {
        // Kaiser's window with β = 18: its side lobes lie 140 dB down.
        const double place = 2 * double(index) / double(size) - 1;
        const double window = std::cyl_bessel_i(0.0, 18 * std::sqrt(1 - place * place)) / std::cyl_bessel_i(0.0, 18.0);
        values[index] = window * stereo.at(2 * (first + index));
    }
    transform(values);
    std::vector<double> powers;
    for (std::size_t index = 0; index <= size / 2; ++index)
        powers.push_back(std::norm(values[index]));
    return powers;
}

} // namespace Tessaron::Testing
