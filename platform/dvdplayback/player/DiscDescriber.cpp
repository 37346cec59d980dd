#include "platform/dvdplayback/player/DiscDescriber.h"

#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/DriveRegion.h"
#include "platform/dvdplayback/player/EncryptionCheck.h"

#include <algorithm>
#include <array>
#include <map>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

constexpr int mostTitles = 99;
constexpr int mostTitleSets = 99;
constexpr int mostChapters = 999;
constexpr int mostAngles = 9;
constexpr std::size_t mostNotes = 200;
constexpr std::size_t mostMenus = 10'000;
constexpr qsizetype identitySize = 8;
constexpr int regionShift = 16; // of the VMG category, its third byte

constexpr int framesOfPAL = 1; // the two upper bits of a time's last byte
constexpr int framesOfNTSC = 3;

QByteArray languageOf(std::uint16_t code)
{
    const std::array letters = {char(code >> 8), char(code & 0xff)};
    const bool isLanguage =
        std::all_of(letters.begin(), letters.end(), [](char letter) { return letter >= 'a' && letter <= 'z'; });
    return isLanguage ? QByteArray(letters.data(), letters.size()) : QByteArray();
}

DVDVideoFacts videoFacts(const video_attr_t &attributes)
{
    DVDVideoFacts video;
    video.standard = attributes.video_format == 1 ? DVDVideoStandard::PAL : DVDVideoStandard::NTSC;
    video.isWide = attributes.display_aspect_ratio == 3;
    const std::uint16_t lines = video.standard == DVDVideoStandard::PAL ? 576 : 480;
    // Three bits, which begin one bit further up than the library's field.
    const unsigned int size = unsigned(attributes.unknown1) << 2 | unsigned(attributes.bit_rate) << 1
        | unsigned(attributes.picture_size) >> 1;
    constexpr std::array<std::uint16_t, 8> widths = {720, 704, 352, 352, 720, 720, 720, 720};
    constexpr unsigned int halfLines = 3;
    video.width = widths[size];
    video.height = size == halfLines ? std::uint16_t(lines / 2) : lines;
    // Each bit of this field forbids one of the two.
    video.mayLetterbox = video.isWide && (attributes.permitted_df & 1) == 0;
    video.mayPanAndScan = video.isWide && (attributes.permitted_df & 2) == 0;
    return video;
}

DVDAudioStream audioStream(const audio_attr_t &attributes)
{
    constexpr std::array formats = {DVDAudioFormat::AC3,   DVDAudioFormat::Unknown, DVDAudioFormat::MPEG1,
                                    DVDAudioFormat::MPEG2, DVDAudioFormat::LPCM,    DVDAudioFormat::Unknown,
                                    DVDAudioFormat::DTS,   DVDAudioFormat::SDDS};
    constexpr std::array purposes = {DVDStreamPurpose::Unstated, DVDStreamPurpose::Normal,
                                     DVDStreamPurpose::VisuallyImpaired, DVDStreamPurpose::Comments,
                                     DVDStreamPurpose::OtherComments};
    constexpr std::array<std::uint8_t, 4> bits = {16, 20, 24, 0};
    DVDAudioStream stream;
    stream.format = formats[attributes.audio_format];
    stream.channels = std::uint8_t(attributes.channels + 1);
    stream.sampleRate = attributes.sample_frequency == 1 ? 96'000 : 48'000;
    if (stream.format == DVDAudioFormat::LPCM)
        stream.bitsPerSample = bits[attributes.quantization];
    if (attributes.lang_type == 1)
        stream.language = languageOf(attributes.lang_code);
    if (attributes.code_extension < purposes.size())
        stream.purpose = purposes[attributes.code_extension];
    return stream;
}

DVDStreamPurpose subtitlePurpose(std::uint8_t code)
{
    switch (code) {
    case 1:
        return DVDStreamPurpose::Normal;
    case 2:
        return DVDStreamPurpose::Large;
    case 3:
        return DVDStreamPurpose::Children;
    case 5:
    case 6:
    case 7:
        return DVDStreamPurpose::HardOfHearing;
    case 9:
        return DVDStreamPurpose::Forced;
    case 13:
    case 14:
    case 15:
        return DVDStreamPurpose::Comments;
    default:
        return DVDStreamPurpose::Unstated;
    }
}

void addMenus(const pgci_ut_t *menus, std::uint8_t titleSet, DVDDescription *description)
{
    constexpr std::uint8_t isEntry = 0x80;
    constexpr std::uint8_t kindMask = 0x0f;
    constexpr std::uint8_t firstKind = 2;
    constexpr std::array kinds = {DVDMenuKind::Title, DVDMenuKind::Root,  DVDMenuKind::Subtitle,
                                  DVDMenuKind::Audio, DVDMenuKind::Angle, DVDMenuKind::Chapter};
    for (int unit = 0; menus && menus->lu && unit < menus->nr_of_lus; ++unit) {
        const pgci_lu_t &language = menus->lu[unit];
        if (!language.pgcit || !language.pgcit->pgci_srp)
            continue;
        for (int index = 0; index < language.pgcit->nr_of_pgci_srp; ++index) {
            const std::uint8_t entry = language.pgcit->pgci_srp[index].entry_id;
            const unsigned int kind = entry & kindMask;
            if ((entry & isEntry) == 0 || kind < firstKind || kind - firstKind >= kinds.size()
                || description->menus.size() >= mostMenus)
                continue;
            description->menus.push_back({kinds[kind - firstKind], titleSet, languageOf(language.lang_code)});
        }
    }
}

/// Reads the tables of one disc into one description.
class Describer
{
public:
    explicit Describer(DiscFiles *disc)
        : m_disc(disc)
    {
    }

    [[nodiscard]] Result<DVDDescription> describe()
    {
        const DiscTables manager(ifoOpen(m_disc->reader(), 0));
        if (!manager || !manager->vmgi_mat)
            return dvdError(kDVDErrorDamagedMedia, m_disc->place().given, whyUnreadable(0));
        addDisc(*manager);
        addMenus(manager->pgci_ut, 0, &m_description);
        if (const tt_srpt_t *const table = manager->tt_srpt; table != nullptr && table->title != nullptr)
            addTitles(*table);
        for (const auto &[number, tables] : m_titleSets)
            addTitleSet(number, tables.get());
        return m_description;
    }

private:
    void addTitles(const tt_srpt_t &table)
    {
        const int titles = table.nr_of_srpts;
        for (int index = 0; index < std::min(titles, mostTitles); ++index)
            addTitle(index + 1, table.title[index]);
        if (titles > mostTitles)
            note(QStringLiteral("%1 titles are listed, of which 99 can be").arg(titles));
    }

    /// What is wrong with both files of a title set's tables, or, for 0, of the disc's.
    [[nodiscard]] QString whyUnreadable(int titleSet) const
    {
        const QString name = titleSet == 0 ? QStringLiteral("VIDEO_TS")
                                           : QStringLiteral("VTS_%1_0").arg(titleSet, 2, 10, QLatin1Char('0'));
        return QStringLiteral("%1.IFO and its copy cannot be read (%1.IFO %2, %1.BUP %3)")
            .arg(name, faultOfTable(titleSet, DVD_READ_INFO_FILE), faultOfTable(titleSet, DVD_READ_INFO_BACKUP_FILE));
    }

    [[nodiscard]] QString faultOfTable(int titleSet, dvd_read_domain_t domain) const
    {
        const DiscFile file(DVDOpenFile(m_disc->reader(), titleSet, domain));
        if (!file)
            return QStringLiteral("is missing");
        constexpr std::size_t lengthOfMark = 12;
        std::array<char, lengthOfMark> mark{};
        if (DVDReadBytes(file.get(), mark.data(), mark.size()) != ssize_t(mark.size()))
            return QStringLiteral("is empty or on a bad place");
        if (QByteArrayView(mark.data(), mark.size()) != QByteArrayView(titleSet == 0 ? "DVDVIDEO-VMG" : "DVDVIDEO-VTS"))
            return QStringLiteral("does not begin as such tables do");
        return QStringLiteral("contradicts itself");
    }

    void note(const QString &text)
    {
        if (std::size_t(m_description.notes.size()) < mostNotes)
            m_description.notes.append(text);
    }

    void addDisc(const ifo_handle_t &manager)
    {
        m_description.prohibitedRegions = std::uint8_t(manager.vmgi_mat->vmg_category >> regionShift);
        const char *const provider = manager.vmgi_mat->provider_identifier;
        m_description.provider =
            QString::fromLatin1(provider, qsizetype(qstrnlen(provider, sizeof(manager.vmgi_mat->provider_identifier))))
                .trimmed();
        std::array<unsigned char, 16> digest{};
        if (DVDDiscID(m_disc->reader(), digest.data()) != 0)
            note(QStringLiteral("some tables cannot be read, so that the disc's identity is not that of sound copies"));
        m_description.identity = QByteArray(reinterpret_cast<const char *>(digest.data()), identitySize);
        std::array<char, 33> volume{};
        if (!m_disc->place().isFolder
            && DVDUDFVolumeInfo(m_disc->reader(), volume.data(), unsigned(volume.size()), nullptr, 0) == 0)
            m_description.volumeName = QString::fromUtf8(volume.data());
        m_description.drive = regionOfDrive(m_disc->place().path);
    }

    static unsigned int qstrnlen(const char *text, std::size_t atMost)
    {
        return unsigned(std::find(text, text + atMost, '\0') - text);
    }

    const ifo_handle_t *titleSet(int number)
    {
        auto found = m_titleSets.find(number);
        if (found == m_titleSets.end())
            found = m_titleSets.emplace(number, DiscTables(ifoOpen(m_disc->reader(), number))).first;
        return found->second.get();
    }

    void addTitle(int number, const title_info_t &info)
    {
        DVDTitle title;
        title.number = std::uint16_t(number);
        title.titleSet = info.title_set_nr;
        title.numberInSet = info.vts_ttn;
        title.angles = std::uint8_t(std::clamp<int>(info.nr_of_angles, 1, mostAngles));
        const bool isPossible = info.title_set_nr >= 1 && info.title_set_nr <= mostTitleSets;
        const ifo_handle_t *const tables = isPossible ? titleSet(info.title_set_nr) : nullptr;
        if (!tables || !tables->vtsi_mat) {
            title.damage = isPossible ? whyUnreadable(info.title_set_nr)
                                      : QStringLiteral("there is no title set %1").arg(int(info.title_set_nr));
        } else {
            addStreams(*tables->vtsi_mat, &title);
            addChapters(*tables, info, &title);
        }
        m_description.titles.push_back(std::move(title));
    }

    static void addStreams(const vtsi_mat_t &tables, DVDTitle *title)
    {
        title->video = videoFacts(tables.vts_video_attr);
        const std::size_t sounds =
            std::min<std::size_t>(tables.nr_of_vts_audio_streams, std::size(tables.vts_audio_attr));
        for (std::size_t index = 0; index < sounds; ++index)
            title->audio.push_back(audioStream(tables.vts_audio_attr[index]));
        const std::size_t texts = std::min<std::size_t>(tables.nr_of_vts_subp_streams, std::size(tables.vts_subp_attr));
        for (std::size_t index = 0; index < texts; ++index) {
            const subp_attr_t &attributes = tables.vts_subp_attr[index];
            title->subtitles.push_back({attributes.type == 1 ? languageOf(attributes.lang_code) : QByteArray(),
                                        subtitlePurpose(attributes.code_extension)});
        }
    }

    static void addChapters(const ifo_handle_t &tables, const title_info_t &info, DVDTitle *title)
    {
        const vts_ptt_srpt_t *const entries = tables.vts_ptt_srpt;
        if (!entries || !entries->title || info.vts_ttn == 0 || info.vts_ttn > entries->nr_of_srpts) {
            title->damage = QStringLiteral("its chapters are not listed");
            return;
        }
        const ttu_t &chapters = entries->title[info.vts_ttn - 1];
        const int count = chapters.ptt ? std::min<int>(chapters.nr_of_ptts, mostChapters) : 0;
        milliseconds start{0};
        for (int index = 0; index < count; ++index) {
            const ptt_info_t &chapter = chapters.ptt[index];
            const pgc_t *const chain = chainOfNumber(tables.vts_pgcit, chapter.pgcn);
            if (!chain || firstCellOfProgram(*chain, chapter.pgn) == 0) {
                title->damage = QStringLiteral("chapter %1 leads nowhere").arg(index + 1);
                continue;
            }
            int last = chain->nr_of_cells;
            if (index + 1 < count && chapters.ptt[index + 1].pgcn == chapter.pgcn) {
                const int next = firstCellOfProgram(*chain, chapters.ptt[index + 1].pgn);
                last = next > 0 ? next - 1 : last;
            }
            const milliseconds length = lengthOfCells(*chain, firstCellOfProgram(*chain, chapter.pgn), last);
            title->chapters.push_back({start, length});
            start += length;
        }
        title->length = start;
    }

    void addTitleSet(int number, const ifo_handle_t *tables)
    {
        if (!tables)
            return;
        addMenus(tables->pgci_ut, std::uint8_t(number), &m_description);
        switch (stateOfContents(m_disc->reader(), number)) {
        case ContentState::Scrambled:
            m_description.isEncrypted = true;
            break;
        case ContentState::Unreadable:
            note(QStringLiteral("the contents of title set %1 cannot be read").arg(number));
            break;
        case ContentState::Missing:
            note(QStringLiteral("title set %1 has no contents").arg(number));
            break;
        case ContentState::Clear:
            break;
        }
    }

    DiscFiles *const m_disc;
    DVDDescription m_description;
    std::map<int, DiscTables> m_titleSets; ///< null for one that cannot be read
};

int decimal(std::uint8_t coded)
{
    return (coded >> 4) * 10 + (coded & 0x0f);
}

bool isDecimal(std::uint8_t coded)
{
    return (coded >> 4) <= 9 && (coded & 0x0f) <= 9;
}

} // namespace

milliseconds millisecondsOf(const dvd_time_t &time)
{
    constexpr std::uint8_t frameMask = 0x3f;
    const std::uint8_t frames = time.frame_u & frameMask;
    if (!isDecimal(time.hour) || !isDecimal(time.minute) || !isDecimal(time.second) || !isDecimal(frames))
        return milliseconds(0);
    const int rate = time.frame_u >> 6;
    milliseconds result = std::chrono::hours(decimal(time.hour)) + std::chrono::minutes(decimal(time.minute))
        + std::chrono::seconds(decimal(time.second));
    if (rate == framesOfPAL)
        result += milliseconds(decimal(frames) * 1000 / 25);
    else if (rate == framesOfNTSC)
        result += milliseconds(decimal(frames) * 1000 / 30);
    return result;
}

milliseconds lengthOfCells(const pgc_t &chain, int first, int last)
{
    milliseconds length{0};
    for (int number = std::max(first, 1); chain.cell_playback && number <= std::min<int>(last, chain.nr_of_cells);
         ++number) {
        const cell_playback_t &cell = chain.cell_playback[number - 1];
        const bool isOtherAngle = cell.block_type == BLOCK_TYPE_ANGLE_BLOCK && cell.block_mode != BLOCK_MODE_FIRST_CELL;
        if (!isOtherAngle)
            length += millisecondsOf(cell.playback_time);
    }
    return length;
}

const pgc_t *chainOfNumber(const pgcit_t *chains, int number)
{
    if (!chains || !chains->pgci_srp || number < 1 || number > chains->nr_of_pgci_srp)
        return nullptr;
    return chains->pgci_srp[number - 1].pgc;
}

int firstCellOfProgram(const pgc_t &chain, int program)
{
    if (!chain.program_map || program < 1 || program > chain.nr_of_programs)
        return 0;
    const int cell = chain.program_map[program - 1];
    return cell <= chain.nr_of_cells ? cell : 0;
}

Result<DVDDescription> describeDisc(DiscFiles *disc)
{
    return Describer(disc).describe();
}

} // namespace Tessaron
