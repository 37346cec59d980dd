#include "platform/dvdplayback/player/Navigator.h"

#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/DiscDescriber.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr int endlessStill = 0xff;
constexpr std::uint8_t wideAspect = 3; // as the library counts
constexpr std::uint32_t noSector = 0xffffffff;
constexpr std::int64_t ticksInMillisecond = 90;
constexpr int mostSoundStreams = 8;

void keep(void *disc, dvdnav_logger_level_t level, const char *format, va_list arguments)
{
    if (level == DVDNAV_LOGGER_LEVEL_ERROR || level == DVDNAV_LOGGER_LEVEL_WARN)
        static_cast<DiscFiles *>(disc)->log().add(format, arguments);
}

constexpr dvdnav_logger_cb logCallback = {keep};

OSStatus statusOf(dvdnav_status_t status)
{
    return status == DVDNAV_STATUS_OK ? noErr : kDVDErrorUserActionNoOp;
}

} // namespace

Navigator::Navigator(DiscFiles *disc, const DVDDescription &description)
    : m_disc(disc)
    , m_description(description)
{
}

Navigator::~Navigator() = default;

Result<std::unique_ptr<Navigator>> Navigator::open(DiscFiles *disc, const DVDDescription &description)
{
    std::unique_ptr<Navigator> navigator(new Navigator(disc, description));
    dvdnav_t *opened = nullptr;
    const dvdnav_status_t status = dvdnav_open2(&opened, disc, &logCallback, disc->place().path.constData());
    if (status != DVDNAV_STATUS_OK || !opened)
        return dvdError(kDVDErrorDamagedMedia, disc->place().given,
                        QStringLiteral("its tables lead nowhere (%1)").arg(disc->log().lastLine()));
    navigator->m_navigation.reset(opened);
    // What is read is kept by the system already.
    dvdnav_set_readahead_flag(opened, 0);
    // Places count from the begin of the title, not of the chapter.
    dvdnav_set_PGC_positioning_flag(opened, 1);
    return navigator;
}

QString Navigator::failureText() const
{
    QString text = QString::fromUtf8(dvdnav_err_to_string(m_navigation.get()));
    // The library says it by its own numbers; 3 stands for the contents of titles.
    static const QRegularExpression opening(QStringLiteral("Error opening vtsN=(\\d+), domain=(\\d+)"));
    const QRegularExpressionMatch match = opening.match(text);
    if (!match.hasMatch())
        return text;
    const QString set = match.captured(1);
    if (match.captured(2) == QLatin1String("3"))
        return QStringLiteral("the contents of title set %1 are missing or cannot be opened").arg(set);
    return set == QLatin1String("0")
        ? QStringLiteral("the menus of the disc are missing or cannot be opened")
        : QStringLiteral("the menus of title set %1 are missing or cannot be opened").arg(set);
}

NavigationStep Navigator::next()
{
    std::int32_t event = DVDNAV_NOP, length = 0;
    if (dvdnav_get_next_block(m_navigation.get(), m_block.data(), &event, &length) != DVDNAV_STATUS_OK)
        return NavigationStep::Failure;
    m_isAtEndOfCell = event == DVDNAV_NOP || event == DVDNAV_WAIT || event == DVDNAV_STILL_FRAME;
    switch (event) {
    case DVDNAV_BLOCK_OK:
        return NavigationStep::Sector;
    case DVDNAV_NAV_PACKET:
        takePosition();
        return NavigationStep::Position;
    case DVDNAV_STILL_FRAME: {
        dvdnav_still_event_t still{};
        std::memcpy(&still, m_block.data(), sizeof(still));
        m_stillSeconds = still.length >= endlessStill || still.length < 0 ? std::nullopt : std::optional(still.length);
        return NavigationStep::Still;
    }
    case DVDNAV_WAIT:
        return NavigationStep::Wait;
    case DVDNAV_SPU_STREAM_CHANGE: {
        dvdnav_spu_stream_change_event_t change{};
        std::memcpy(&change, m_block.data(), sizeof(change));
        constexpr int isHidden = 0x80;
        constexpr int streamMask = 0x1f;
        const bool isShown = change.physical_wide >= 0 && (change.physical_wide & isHidden) == 0;
        m_chosenSubtitles = change.logical;
        m_subpictureStream = isShown ? std::optional(change.physical_wide & streamMask) : std::nullopt;
        return NavigationStep::Stream;
    }
    case DVDNAV_AUDIO_STREAM_CHANGE: {
        dvdnav_audio_stream_change_event_t change{};
        std::memcpy(&change, m_block.data(), sizeof(change));
        m_chosenSound = change.logical;
        return NavigationStep::Nothing;
    }
    case DVDNAV_SPU_CLUT_CHANGE:
        std::memcpy(m_colours.data(), m_block.data(), sizeof(m_colours));
        return NavigationStep::Stream;
    case DVDNAV_CELL_CHANGE: {
        dvdnav_cell_change_event_t change{};
        std::memcpy(&change, m_block.data(), sizeof(change));
        m_cell = change.cellN;
        takePicture();
        return NavigationStep::Nothing;
    }
    case DVDNAV_VTS_CHANGE:
        takePicture();
        return NavigationStep::Nothing;
    case DVDNAV_HIGHLIGHT:
        return NavigationStep::Highlight;
    case DVDNAV_HOP_CHANNEL:
        return NavigationStep::Jump;
    case DVDNAV_STOP:
        return NavigationStep::Stop;
    default:
        return NavigationStep::Nothing;
    }
}

void Navigator::skipStill()
{
    dvdnav_still_skip(m_navigation.get());
}

void Navigator::skipWait()
{
    dvdnav_wait_skip(m_navigation.get());
}

const ifo_handle_t *Navigator::titleSet(int number)
{
    auto found = m_titleSets.find(number);
    if (found == m_titleSets.end())
        found = m_titleSets.emplace(number, DiscTables(ifoOpen(m_disc->reader(), number))).first;
    return found->second.get();
}

void Navigator::takePicture()
{
    const std::uint8_t aspect = dvdnav_get_video_aspect(m_navigation.get());
    m_position.aspect = aspect == wideAspect ? kDVDAspectRatio16x9 : kDVDAspectRatio4x3;
    // The library takes the size of pictures from other bits of the tables than those that have it.
    std::uint32_t width = 0, height = 0;
    constexpr std::uint32_t linesOfPAL = 288;
    if (dvdnav_get_video_resolution(m_navigation.get(), &width, &height) == DVDNAV_STATUS_OK && height > 0)
        m_position.format = height % linesOfPAL == 0 ? kDVDFormatPAL : kDVDFormatNTSC;
}

void Navigator::takePosition()
{
    m_hasStarted = true;
    const pci_t *const pci = dvdnav_get_current_nav_pci(m_navigation.get());
    m_position.buttons = pci ? std::uint8_t(pci->hli.hl_gi.btn_ns) : std::uint8_t(0);
    m_position.begin = pci ? pci->pci_gi.vobu_s_ptm : 0;
    m_position.end = pci ? pci->pci_gi.vobu_e_ptm : 0;
    takeSoundStream();
    m_position.isInTitle = dvdnav_is_domain_vts(m_navigation.get()) != 0;
    if (m_position.isInTitle) {
        takePlace();
        return;
    }
    m_position.place = {};
    m_position.length = 0;
    m_position.angles = 1;
    m_position.soundStreams = m_position.soundStream = m_position.subtitleStreams = m_position.subtitleStream = 0;
}

/// The number in the packs, within its kind; -1 for a stream that is not there.
int Navigator::numberOfSound(int chosen) const
{
    return chosen >= 0 && chosen < mostSoundStreams
        ? int(dvdnav_get_audio_logical_stream(m_navigation.get(), std::uint8_t(chosen)))
        : -1;
}

/// The library tells another choice of the disc, but not what that is in other titles and menus.
void Navigator::takeSoundStream()
{
    int chosen = isInMenu() ? 0 : m_chosenSound;
    // The first one that is there, as the library does it.
    if (numberOfSound(chosen) < 0)
        for (chosen = 0; chosen < mostSoundStreams && numberOfSound(chosen) < 0;)
            ++chosen;
    m_soundStream.reset();
    m_position.soundStream = 0;
    if (chosen >= mostSoundStreams)
        return;
    m_position.soundStream = std::uint8_t(chosen + 1);
    switch (dvdnav_audio_stream_format(m_navigation.get(), std::uint8_t(chosen))) {
    case DVD_AUDIO_FORMAT_AC3:
        m_soundStream = {ElementaryKind::AC3, numberOfSound(chosen)};
        break;
    case DVD_AUDIO_FORMAT_MPEG:
    case DVD_AUDIO_FORMAT_MPEG2_EXT:
        m_soundStream = {ElementaryKind::MPEGAudio, numberOfSound(chosen)};
        break;
    case DVD_AUDIO_FORMAT_LPCM:
        m_soundStream = {ElementaryKind::LPCM, numberOfSound(chosen)};
        break;
    case DVD_AUDIO_FORMAT_DTS:
        m_soundStream = {ElementaryKind::DTS, numberOfSound(chosen)};
        break;
    default:
        break;
    }
}

/// In titles only.
void Navigator::takePlace()
{
    PlayerPlace place;
    std::int32_t title = 0, chapter = 0, chain = 0, program = 0, angle = 1, angles = 1;
    if (dvdnav_current_title_info(m_navigation.get(), &title, &chapter) != DVDNAV_STATUS_OK
        || dvdnav_current_title_program(m_navigation.get(), &title, &chain, &program) != DVDNAV_STATUS_OK || title < 1
        || std::size_t(title) > m_description.titles.size() || chapter < 1) {
        m_position.place = {};
        return;
    }
    if (dvdnav_get_angle_info(m_navigation.get(), &angle, &angles) != DVDNAV_STATUS_OK)
        angle = angles = 1;
    const DVDTitle &known = m_description.titles[std::size_t(title - 1)];
    place.title = std::uint16_t(title);
    place.chapter = std::uint16_t(chapter);
    place.programChain = std::uint16_t(chain);
    place.program = std::uint16_t(program);
    place.angle = std::uint8_t(std::clamp(angle, 1, 9));
    const dsi_t *const dsi = dvdnav_get_current_nav_dsi(m_navigation.get());
    place.sector = dsi ? dsi->dsi_gi.nv_pck_lbn : 0;
    std::uint32_t sector = 0, count = 0;
    // Along other angles than the first the library cannot tell.
    const bool isKnown = angle == 1 && dvdnav_get_position(m_navigation.get(), &sector, &count) == DVDNAV_STATUS_OK;
    place.sectorInTitle = isKnown ? sector : noSector;

    std::chrono::milliseconds elapsed = dsi ? millisecondsOf(dsi->dsi_gi.c_eltm) : std::chrono::milliseconds(0);
    const ifo_handle_t *const tables = titleSet(known.titleSet);
    const pgc_t *const cells = tables ? chainOfNumber(tables->vts_pgcit, chain) : nullptr;
    if (cells && std::size_t(chapter) <= known.chapters.size()) {
        int cell = std::clamp<int>(m_cell, 1, std::max<int>(cells->nr_of_cells, 1));
        // All angles of a block begin together.
        while (cell > 1 && cells->cell_playback && cells->cell_playback[cell - 1].block_type == BLOCK_TYPE_ANGLE_BLOCK
               && cells->cell_playback[cell - 1].block_mode != BLOCK_MODE_FIRST_CELL)
            --cell;
        const DVDChapter &begin = known.chapters[std::size_t(chapter - 1)];
        const vts_ptt_srpt_t *const entries = tables->vts_ptt_srpt;
        int first = 1;
        if (entries && entries->title && known.numberInSet >= 1 && known.numberInSet <= entries->nr_of_srpts
            && chapter <= entries->title[known.numberInSet - 1].nr_of_ptts)
            first = firstCellOfProgram(*cells, entries->title[known.numberInSet - 1].ptt[chapter - 1].pgn);
        elapsed += begin.start + lengthOfCells(*cells, first, cell - 1);
    }
    place.elapsed = std::uint32_t(std::clamp<std::int64_t>(elapsed.count(), 0, 0x7fffffff));
    m_position.place = place;
    m_position.length = std::uint32_t(std::clamp<std::int64_t>(known.length.count(), 0, 0x7fffffff));
    m_position.angles = std::uint16_t(std::clamp(angles, 1, 9));
    m_position.soundStreams = std::uint8_t(known.audio.size());
    m_position.subtitleStreams = std::uint8_t(known.subtitles.size());
    constexpr int numberMask = 0x3f;
    const int subtitles = m_chosenSubtitles & numberMask;
    const bool areShown = m_subpictureStream && std::size_t(subtitles) < known.subtitles.size();
    m_position.subtitleStream = areShown ? std::uint8_t(subtitles + 1) : std::uint8_t(0);
}

bool Navigator::isInMenu() const
{
    return dvdnav_is_domain_vmgm(m_navigation.get()) != 0 || dvdnav_is_domain_vtsm(m_navigation.get()) != 0;
}

/// Null where there are none that may be touched.
pci_t *Navigator::buttons() const
{
    if (!m_hasStarted || !isInMenu())
        return nullptr;
    pci_t *const pci = dvdnav_get_current_nav_pci(m_navigation.get());
    constexpr unsigned int mostButtons = 36;
    const bool hasButtons =
        pci && pci->hli.hl_gi.hli_ss != 0 && pci->hli.hl_gi.btn_ns > 0 && pci->hli.hl_gi.btn_ns <= mostButtons;
    return hasButtons ? pci : nullptr;
}

OSStatus Navigator::playChapter(int title, int chapter)
{
    if (title < 1 || std::size_t(title) > m_description.titles.size() || chapter < 1
        || std::size_t(chapter) > m_description.titles[std::size_t(title - 1)].chapters.size())
        return kDVDErrorWrongParam;
    if (dvdnav_part_play(m_navigation.get(), title, chapter) != DVDNAV_STATUS_OK)
        return kDVDErrorUserActionNoOp;
    // The library takes a still along to the other place, where nothing would be read before it is over. The way to the
    // begin of the program there ends it, which skipping would not do without skipping the next one as well.
    if (m_isAtEndOfCell && dvdnav_is_domain_vts(m_navigation.get()) != 0)
        dvdnav_top_pg_search(m_navigation.get());
    return noErr;
}

OSStatus Navigator::goToMenu(std::uint32_t menu)
{
    constexpr std::array menus = {DVD_MENU_Title, DVD_MENU_Root,  DVD_MENU_Subpicture,
                                  DVD_MENU_Audio, DVD_MENU_Angle, DVD_MENU_Part};
    if (menu >= menus.size())
        return kDVDErrorWrongParam;
    return m_hasStarted ? statusOf(dvdnav_menu_call(m_navigation.get(), menus[menu])) : kDVDErrorUserActionNoOp;
}

OSStatus Navigator::returnToTitle()
{
    if (!m_hasStarted || !isInMenu())
        return kDVDErrorUserActionNoOp;
    return statusOf(dvdnav_menu_call(m_navigation.get(), DVD_MENU_Escape));
}

OSStatus Navigator::setAngle(int angle)
{
    if (!m_hasStarted || !m_position.isInTitle || m_position.place.title == 0)
        return kDVDErrorUserActionNoOp;
    if (angle < 1 || angle > m_position.angles)
        return kDVDErrorWrongParam;
    return statusOf(dvdnav_angle_change(m_navigation.get(), angle));
}

bool Navigator::forbids(UserOperation operation) const
{
    if (!m_hasStarted)
        return false;
    const user_ops_t forbidden = dvdnav_get_restrictions(m_navigation.get());
    switch (operation) {
    case UserOperation::TitleOrTimePlay:
        return forbidden.title_or_time_play != 0;
    case UserOperation::ChapterPlay:
        return forbidden.chapter_search_or_play != 0;
    case UserOperation::TitlePlay:
        return forbidden.title_play != 0;
    case UserOperation::Stop:
        return forbidden.stop != 0;
    case UserOperation::TimeOrChapterSearch:
        return forbidden.time_or_chapter_search != 0;
    case UserOperation::PreviousProgram:
        return forbidden.prev_or_top_pg_search != 0;
    case UserOperation::NextProgram:
        return forbidden.next_pg_search != 0;
    case UserOperation::ForwardScan:
        return forbidden.forward_scan != 0;
    case UserOperation::BackwardScan:
        return forbidden.backward_scan != 0;
    case UserOperation::TitleMenu:
        return forbidden.title_menu_call != 0;
    case UserOperation::RootMenu:
        return forbidden.root_menu_call != 0;
    case UserOperation::SubtitleMenu:
        return forbidden.subpic_menu_call != 0;
    case UserOperation::AudioMenu:
        return forbidden.audio_menu_call != 0;
    case UserOperation::AngleMenu:
        return forbidden.angle_menu_call != 0;
    case UserOperation::ChapterMenu:
        return forbidden.chapter_menu_call != 0;
    case UserOperation::Resume:
        return forbidden.resume != 0;
    case UserOperation::Button:
        return forbidden.button_select_or_activate != 0;
    case UserOperation::Pause:
        return forbidden.pause_on != 0;
    case UserOperation::SoundStream:
        return forbidden.audio_stream_change != 0;
    case UserOperation::SubtitleStream:
        return forbidden.subpic_stream_change != 0;
    case UserOperation::Angle:
        return forbidden.angle_change != 0;
    }
    return false;
}

/// The library has no call for it: the command that discs have for it is carried out, as if a button had it. What is 0
/// stays as it is.
OSStatus Navigator::chooseStreams(std::uint8_t sound, std::uint8_t subtitles)
{
    constexpr std::uint8_t setStreams = 0x51;
    vm_cmd_t command = {{setStreams, 0, 0, sound, subtitles, 0, 0, 0}};
    std::int32_t button = 0;
    if (dvdnav_get_current_highlight(m_navigation.get(), &button) != DVDNAV_STATUS_OK || button < 1)
        button = 1;
    return statusOf(dvdnav_button_activate_cmd(m_navigation.get(), button, &command));
}

OSStatus Navigator::chooseSound(int stream)
{
    if (!m_hasStarted || !m_position.isInTitle || m_position.place.title == 0)
        return kDVDErrorUserActionNoOp;
    if (stream < 1 || stream > m_position.soundStreams)
        return kDVDErrorWrongParam;
    constexpr int isSet = 0x80;
    return numberOfSound(stream - 1) >= 0 ? chooseStreams(std::uint8_t(isSet | (stream - 1)), 0)
                                          : kDVDErrorUserActionNoOp;
}

OSStatus Navigator::chooseSubtitles(int stream)
{
    if (!m_hasStarted || !m_position.isInTitle || m_position.place.title == 0)
        return kDVDErrorUserActionNoOp;
    if (stream < 0 || stream > m_position.subtitleStreams)
        return kDVDErrorWrongParam;
    constexpr int isSet = 0x80, isShown = 0x40;
    if (stream == 0)
        return chooseStreams(0, std::uint8_t(isSet | noSubtitles));
    return dvdnav_get_spu_logical_stream(m_navigation.get(), std::uint8_t(stream - 1)) >= 0
        ? chooseStreams(0, std::uint8_t(isSet | isShown | (stream - 1)))
        : kDVDErrorUserActionNoOp;
}

OSStatus Navigator::moveSelection(std::uint32_t navigation)
{
    pci_t *const pci = buttons();
    if (!pci)
        return kDVDErrorUserActionNoOp;
    switch (navigation) {
    case kDVDUserNavigationMoveUp:
        return statusOf(dvdnav_upper_button_select(m_navigation.get(), pci));
    case kDVDUserNavigationMoveDown:
        return statusOf(dvdnav_lower_button_select(m_navigation.get(), pci));
    case kDVDUserNavigationMoveLeft:
        return statusOf(dvdnav_left_button_select(m_navigation.get(), pci));
    case kDVDUserNavigationMoveRight:
        return statusOf(dvdnav_right_button_select(m_navigation.get(), pci));
    case kDVDUserNavigationEnter:
        return statusOf(dvdnav_button_activate(m_navigation.get(), pci));
    default:
        return kDVDErrorWrongParam;
    }
}

std::int32_t Navigator::pointAt(int x, int y, bool activates, bool *wasActivated)
{
    pci_t *const pci = buttons();
    for (int number = 1; pci && number <= int(pci->hli.hl_gi.btn_ns); ++number) {
        const btni_t &button = pci->hli.btnit[number - 1];
        if (x < int(button.x_start) || x > int(button.x_end) || y < int(button.y_start) || y > int(button.y_end))
            continue;
        if (activates)
            *wasActivated = dvdnav_button_select_and_activate(m_navigation.get(), pci, number) == DVDNAV_STATUS_OK;
        else
            dvdnav_button_select(m_navigation.get(), pci, number);
        return number - 1;
    }
    return -1;
}

OSStatus Navigator::searchTime(std::uint32_t milliseconds)
{
    if (!m_hasStarted || !m_position.isInTitle || m_position.place.title == 0)
        return kDVDErrorUserActionNoOp;
    return statusOf(dvdnav_time_search(m_navigation.get(), std::uint64_t(milliseconds) * ticksInMillisecond));
}

OSStatus Navigator::searchSector(std::uint32_t sectorInTitle)
{
    if (!m_hasStarted || !m_position.isInTitle || m_position.place.title == 0)
        return kDVDErrorUserActionNoOp;
    return statusOf(dvdnav_sector_search(m_navigation.get(), sectorInTitle, SEEK_SET));
}

int Navigator::selectedButton() const
{
    std::int32_t number = 0;
    if (!buttons() || dvdnav_get_current_highlight(m_navigation.get(), &number) != DVDNAV_STATUS_OK)
        return 0;
    return std::clamp<int>(number, 0, 36);
}

std::optional<ButtonColours> Navigator::highlight(bool isActivated) const
{
    pci_t *const pci = buttons();
    const int number = selectedButton();
    dvdnav_highlight_area_t area{};
    if (!pci || number < 1 || number > int(pci->hli.hl_gi.btn_ns)
        || dvdnav_get_highlight_area(pci, number, isActivated ? 1 : 0, &area) != DVDNAV_STATUS_OK)
        return std::nullopt;
    return ButtonColours{{area.sx, area.sy, area.ex + 1, area.ey + 1}, coloursOfButton(area.palette)};
}

} // namespace Tessaron
