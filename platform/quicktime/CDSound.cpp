#include "platform/quicktime/CDSound.h"

#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/SoundHelper.h"
#include "platform/quicktime/SoundHelpers.h"
#include "platform/quicktime/SoundRecords.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

using namespace SoundProtocol;

namespace
{

std::size_t sizeOfSample(CDSampleForm form)
{
    return form == CDSampleForm::Int16 ? CDSound::bytesPerSample : CDSound::bytesPerFloatSample;
}

} // namespace

CDSound::CDSound(QByteArray path, std::unique_ptr<SoundHelper> helper, const std::stop_token &stop,
                 const CDSoundOptions &options)
    : m_path(std::move(path))
    , m_options(options)
    , m_stop(stop)
    , m_helper(std::move(helper))
    , m_onStop(std::make_unique<OnStop>(stop, [this] { m_helper->interrupt(); }))
{
}

CDSound::~CDSound()
{
    // Sound that was asked for must not be taken for an answer to the next request.
    while (m_options.helpers && m_asked > 0 && m_helper->receive())
        --m_asked;
    m_onStop.reset();
    if (m_options.helpers)
        m_options.helpers->giveBack(std::move(m_helper));
}

Result<std::unique_ptr<CDSound>> CDSound::openFile(const QByteArray &path, const std::stop_token &stop,
                                                   const CDSoundOptions &options)
{
    Result<std::unique_ptr<SoundHelper>> helper =
        options.helpers ? options.helpers->take(path) : SoundHelper::start(path);
    if (!helper)
        return helper.error();
    std::unique_ptr<CDSound> sound(new CDSound(path, *std::move(helper), stop, options));
    if (const NSError error = sound->open())
        return error;
    return sound;
}

Result<std::uint64_t> CDSound::countSamples(const QByteArray &path, const std::stop_token &stop, SoundHelpers *helpers)
{
    CDSoundOptions options;
    options.helpers = helpers;
    options.needsExactLength = true;
    const Result<std::unique_ptr<CDSound>> sound = openFile(path, stop, options);
    return sound ? Result<std::uint64_t>((*sound)->length().samples) : Result<std::uint64_t>(sound.error());
}

NSError CDSound::failure()
{
    return m_stop.stop_requested() ? mediaCancelledError(m_path) : m_helper->howItEnded(m_path);
}

NSError CDSound::open()
{
    const bool isPut =
        m_helper->putRecord(recordOfRequest({m_path, m_options.form, m_options.gain, m_options.needsExactLength}));
    if (!isPut)
        return mediaError(paramErr, m_path, QStringLiteral("its path is too long"),
                          QStringLiteral("Move the file to another folder."));
    const Result<QByteArray> record = recordFor({Kind::Open});
    if (!record)
        return record.error();
    OpenedSound opened;
    if (!readOpened(*record, &opened))
        return errorOfRecord({}, m_path);
    m_length = opened.length;
    m_tags = opened.tags;
    return {};
}

Result<QByteArray> CDSound::recordFor(const Message &request)
{
    if (!m_helper->send(request))
        return failure();
    for (;;) {
        const std::optional<Message> answer = m_helper->receive();
        if (!answer)
            return failure();
        if (m_asked > 0) {
            --m_asked;
            m_come.push_back(*answer);
            continue;
        }
        const QByteArray record = m_helper->record(*answer);
        return answer->kind == Kind::Done ? Result<QByteArray>(record) : errorOfRecord(record, m_path);
    }
}

/// Asks for all slots that are free: none of them is read, or waits to be.
bool CDSound::askForSound()
{
    while (m_asked + m_come.size() < slotCount) {
        if (!m_helper->send({Kind::Fill, m_nextSlot}))
            return false;
        m_nextSlot = std::uint32_t((m_nextSlot + 1) % slotCount);
        ++m_asked;
    }
    return true;
}

NSError CDSound::takeNextSound()
{
    if (!askForSound())
        return failure();
    if (m_come.empty()) {
        const std::optional<Message> answer = m_helper->receive();
        if (!answer)
            return failure();
        --m_asked;
        m_come.push_back(*answer);
    }
    const Message answer = m_come.front();
    m_come.pop_front();
    if (answer.kind != Kind::Done)
        return errorOfRecord(m_helper->record(answer), m_path);
    m_rest = m_helper->sound(answer);
    m_rest = m_rest.first(m_rest.size() - m_rest.size() % sizeOfSample(m_options.form));
    m_damagedPlaces = answer.damagedPlaces;
    m_isAtEnd = m_rest.empty();
    return {};
}

Result<std::span<const char>> CDSound::next(std::size_t atMost)
{
    if (m_rest.empty() && !m_isAtEnd) {
        if (const NSError error = takeNextSound()) {
            m_isAtEnd = true;
            return error;
        }
    }
    const std::size_t size = sizeOfSample(m_options.form);
    const std::span<const char> piece = m_rest.first(std::min(m_rest.size(), atMost - atMost % size));
    m_rest = m_rest.subspan(piece.size());
    return piece;
}

Result<std::size_t> CDSound::read(char *buffer, std::size_t samples)
{
    const std::size_t size = sizeOfSample(m_options.form);
    std::size_t filled = 0;
    while (filled < samples * size) {
        const Result<std::span<const char>> piece = next(samples * size - filled);
        if (!piece)
            return piece.error();
        if (piece->empty())
            break;
        std::memcpy(buffer + filled, piece->data(), piece->size());
        filled += piece->size();
    }
    return filled / size;
}

const AudioDamageReport &CDSound::damage()
{
    if (m_damagedPlaces == m_damage.count)
        return m_damage;
    const Result<QByteArray> record = recordFor({Kind::TellDamage});
    if (record && readDamage(*record, &m_damage))
        return m_damage;
    // What is known has to be told in any case.
    m_damage.add(0, QStringLiteral("places in the file are damaged; where was not to be found out"));
    m_damage.count = std::max(m_damage.count, m_damagedPlaces);
    m_damagedPlaces = m_damage.count;
    return m_damage;
}

} // namespace Tessaron
