#include "platform/quicktime/decoding/CDAudioDecoder.h"

#include "platform/quicktime/decoding/AudioStreamReader.h"
#include "platform/quicktime/decoding/DownmixMatrix.h"
#include "platform/quicktime/decoding/FFmpegErrors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

namespace Tessaron
{

namespace
{

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

constexpr int soxrPrecision = 28; ///< bits; the best that soxr has

AVSampleFormat formatOf(CDSampleForm form)
{
    return form == CDSampleForm::Int16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLT;
}

/// Encoders of Opus have resampled to 48,000 and rounded up: rounded down, a sound that was a CD's has its length
/// again.
std::int64_t scaled(std::int64_t samples, int rate, int outputRate, AVCodecID codec)
{
    return av_rescale_rnd(samples, outputRate, rate, codec == AV_CODEC_ID_OPUS ? AV_ROUND_DOWN : AV_ROUND_NEAR_INF);
}

} // namespace

struct CDAudioDecoder::Private {
    Private(std::unique_ptr<AudioStreamReader> stream, const CDAudioDecoderOptions &options)
        : reader(std::move(stream))
        , outputRate(int(options.rate))
        , outputFormat(formatOf(options.form))
        , gain(options.gain)
        , sampleSize(std::size_t(av_get_bytes_per_sample(outputFormat)) * 2)
    {
    }

    [[nodiscard]] bool fitsForm(const AVFrame &frame) const
    {
        return hasForm && format == frame.format && rate == frame.sample_rate
            && layout.nb_channels == frame.ch_layout.nb_channels
            && av_channel_layout_compare(&layout, &frame.ch_layout) == 0;
    }
    [[nodiscard]] int beginForm(const AVFrame &frame);
    [[nodiscard]] int setUpResampler();
    [[nodiscard]] int endForm();
    [[nodiscard]] int convert(const SampleRun &run);
    [[nodiscard]] int resample(const std::uint8_t *const *planes, int count);
    [[nodiscard]] int drainResampler();
    [[nodiscard]] int runResampler(const std::uint8_t *const *planes, int count, int room);
    [[nodiscard]] NSError decodeMore();
    void takeKept();
    [[nodiscard]] std::uint8_t *placeFor(std::size_t samples);
    void putSamples(std::size_t samples, std::size_t room);

    [[nodiscard]] std::int64_t scaledToOutput(std::int64_t samples, int fromRate) const
    {
        return scaled(samples, fromRate, outputRate, reader->parameters().codec_id);
    }

    const std::unique_ptr<AudioStreamReader> reader;
    const int outputRate; ///< samples a second
    const AVSampleFormat outputFormat;
    const double gain;
    const std::size_t sampleSize; ///< bytes of both channels
    std::span<char> target; ///< what the present read still has to fill
    std::vector<char> output; ///< decoded beyond what a read has asked for, from `taken` on
    std::size_t taken = 0; ///< bytes
    bool isPlacedInTarget = false; ///< where placeFor() has pointed last
    bool isAtEnd = false;

    // The form of the samples that come from the stream now.
    bool hasForm = false;
    int format = 0;
    int rate = 0;
    AVChannelLayout layout = {};
    Resampler resampler; ///< null while samples pass as they are
    std::int64_t samplesIn = 0; ///< of this form
    std::int64_t samplesOut = 0;

    ~Private() { av_channel_layout_uninit(&layout); }
    Private(const Private &) = delete;
    Private &operator=(const Private &) = delete;
};

int CDAudioDecoder::Private::beginForm(const AVFrame &frame)
{
    format = frame.format;
    rate = frame.sample_rate;
    samplesIn = samplesOut = 0;
    resampler.reset();
    if (const int code = av_channel_layout_copy(&layout, &frame.ch_layout); code < 0)
        return code;
    if (rate <= 0 || layout.nb_channels <= 0)
        return AVERROR_INVALIDDATA;
    hasForm = true;
    const bool passesAsItIs = format == outputFormat && rate == outputRate && layout.nb_channels == 2 && gain == 1;
    return passesAsItIs ? 0 : setUpResampler();
}

int CDAudioDecoder::Private::setUpResampler()
{
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout unnamed = {};
    unnamed.order = AV_CHANNEL_ORDER_UNSPEC;
    unnamed.nb_channels = layout.nb_channels;
    SwrContext *made = nullptr;
    int code = swr_alloc_set_opts2(&made, &stereo, outputFormat, outputRate, &unnamed, AVSampleFormat(format), rate, 0,
                                   nullptr);
    resampler.reset(made);
    if (code < 0)
        return code;
    // Whole numbers that need no rounding are not dithered.
    const bool staysWhole = av_get_bytes_per_sample(AVSampleFormat(format)) <= 2 && rate == outputRate
        && layout.nb_channels <= 2 && gain == 1;
    const bool isRounded = outputFormat == AV_SAMPLE_FMT_S16 && !staysWhole;
    av_opt_set(made, "resampler", "soxr", 0);
    av_opt_set_int(made, "precision", soxrPrecision, 0);
    av_opt_set_sample_fmt(made, "internal_sample_fmt", AV_SAMPLE_FMT_FLTP, 0);
    av_opt_set_int(made, "dither_method", isRounded ? SWR_DITHER_TRIANGULAR : SWR_DITHER_NONE, 0);
    const std::vector<ChannelWeights> weights = downmixMatrix(layout);
    std::vector<double> matrix;
    matrix.reserve(weights.size() * 2);
    for (const ChannelWeights &one : weights)
        matrix.push_back(one.left * gain);
    for (const ChannelWeights &one : weights)
        matrix.push_back(one.right * gain);
    if (code = swr_set_matrix(made, matrix.data(), layout.nb_channels); code < 0)
        return code;
    return swr_init(made);
}

/// Takes what the resampler still holds. Filters give a sample more or less than the rates say; that is evened out.
int CDAudioDecoder::Private::endForm()
{
    if (!hasForm || !resampler)
        return 0;
    if (const int code = drainResampler(); code < 0)
        return code;
    const std::int64_t missing = scaledToOutput(samplesIn, rate) - samplesOut;
    const std::size_t excess =
        std::min(std::size_t(std::max<std::int64_t>(-missing, 0)) * sampleSize, output.size() - taken);
    output.resize(output.size() - excess);
    output.resize(output.size() + std::size_t(std::max<std::int64_t>(missing, 0)) * sampleSize, 0);
    hasForm = false;
    return 0;
}

/// Where that many samples can be put: where the reader wants them, or else, when they are more than it wants or others
/// come before them, among those that are kept for its next read.
std::uint8_t *CDAudioDecoder::Private::placeFor(std::size_t samples)
{
    const std::size_t bytes = samples * sampleSize;
    isPlacedInTarget = output.size() == taken && bytes <= target.size();
    if (isPlacedInTarget)
        return reinterpret_cast<std::uint8_t *>(target.data());
    const std::size_t before = output.size();
    output.resize(before + bytes);
    return reinterpret_cast<std::uint8_t *>(output.data() + before);
}

/// So many of the last place hold samples now, which were `room` ones.
void CDAudioDecoder::Private::putSamples(std::size_t samples, std::size_t room)
{
    if (isPlacedInTarget)
        target = target.subspan(samples * sampleSize);
    else
        output.resize(output.size() - (room - samples) * sampleSize);
}

/// Puts at most `room` samples where they belong; how many, or a negative code.
int CDAudioDecoder::Private::runResampler(const std::uint8_t *const *planes, int count, int room)
{
    std::uint8_t *place = placeFor(std::size_t(room));
    const int got = swr_convert(resampler.get(), &place, room, const_cast<const std::uint8_t **>(planes), count);
    putSamples(std::size_t(std::max(got, 0)), std::size_t(room));
    samplesOut += std::max(got, 0);
    return got;
}

int CDAudioDecoder::Private::resample(const std::uint8_t *const *planes, int count)
{
    return std::min(runResampler(planes, count, std::max(swr_get_out_samples(resampler.get(), count), 1)), 0);
}

/// Into what is kept, even where the reader has room: some of it may be too much.
int CDAudioDecoder::Private::drainResampler()
{
    constexpr int room = 4096; // samples
    const std::span<char> wanted = std::exchange(target, {});
    int got = 0;
    do
        got = runResampler(nullptr, 0, room);
    while (got > 0);
    target = wanted;
    return got;
}

int CDAudioDecoder::Private::convert(const SampleRun &run)
{
    if (!fitsForm(*run.frame)) {
        if (const int code = endForm(); code < 0)
            return code;
        if (const int code = beginForm(*run.frame); code < 0)
            return code;
    }
    samplesIn += run.count;
    const std::vector<const std::uint8_t *> planes = planesOf(run);
    if (resampler)
        return resample(planes.data(), run.count);
    const auto samples = std::size_t(run.count);
    std::memcpy(placeFor(samples), planes.front(), samples * sampleSize);
    putSamples(samples, samples);
    return 0;
}

/// Gives the reader what was kept for it.
void CDAudioDecoder::Private::takeKept()
{
    const std::size_t bytes = std::min(output.size() - taken, target.size());
    if (bytes == 0)
        return;
    std::memcpy(target.data(), output.data() + taken, bytes);
    target = target.subspan(bytes);
    taken += bytes;
    if (taken < output.size())
        return;
    output.clear();
    taken = 0;
}

NSError CDAudioDecoder::Private::decodeMore()
{
    const Result<SampleRun> run = reader->next();
    if (!run)
        return run.error();
    isAtEnd = !run->frame;
    const int code = isAtEnd ? endForm() : convert(*run);
    return code < 0 ? mediaErrorOfCode(code, reader->path(), QStringLiteral("converting the sound")) : NSError();
}

CDAudioDecoder::CDAudioDecoder(std::unique_ptr<Private> priv)
    : d(std::move(priv))
{
}

CDAudioDecoder::~CDAudioDecoder() = default;

Result<std::unique_ptr<CDAudioDecoder>> CDAudioDecoder::openFile(const QByteArray &path, std::stop_token stop,
                                                                 const CDAudioDecoderOptions &options)
{
    Result<std::unique_ptr<AudioStreamReader>> reader = AudioStreamReader::open(path, std::move(stop));
    if (!reader)
        return reader.error();
    return std::unique_ptr<CDAudioDecoder>(new CDAudioDecoder(std::make_unique<Private>(*std::move(reader), options)));
}

Result<std::uint64_t> CDAudioDecoder::countSamples(const QByteArray &path, std::stop_token stop)
{
    const Result<std::unique_ptr<CDAudioDecoder>> decoder = openFile(path, std::move(stop));
    if (!decoder)
        return decoder.error();
    if (const CDAudioLength length = (*decoder)->length(); length.isExact)
        return length.samples;
    std::array<char, std::size_t(64) * 1024> buffer;
    std::uint64_t samples = 0;
    for (;;) {
        const Result<std::size_t> got = (*decoder)->read(buffer.data(), buffer.size() / bytesPerSample);
        if (!got)
            return got.error();
        if (*got == 0)
            return samples;
        samples += *got;
    }
}

CDAudioLength CDAudioDecoder::length() const
{
    const SampleCount length = d->reader->length();
    const std::int64_t samples = std::max<std::int64_t>(d->scaledToOutput(length.samples, d->reader->sampleRate()), 0);
    return {std::uint64_t(samples), length.isExact};
}

std::size_t CDAudioDecoder::sizeOfSample() const
{
    return d->sampleSize;
}

Result<std::size_t> CDAudioDecoder::read(char *buffer, std::size_t samples)
{
    d->target = {buffer, samples * d->sampleSize};
    NSError error;
    for (d->takeKept(); !error && !d->target.empty() && !d->isAtEnd; d->takeKept())
        error = d->decodeMore();
    const std::size_t missing = std::exchange(d->target, {}).size() / d->sampleSize;
    if (error)
        return error;
    return samples - missing;
}

const AudioDamageReport &CDAudioDecoder::damage() const
{
    return d->reader->damage();
}

QMap<QString, QString> CDAudioDecoder::tags() const
{
    return d->reader->tags();
}

double CDAudioDecoder::progress() const
{
    return d->reader->progress();
}

} // namespace Tessaron
