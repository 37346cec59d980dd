#include "platform/discrecording/planning/DiscImagePlan.h"

#include "platform/discrecording/content/ContentTreeBuilder.h"
#include "platform/discrecording/content/WorkerFailures.h"
#include "platform/discrecording/hfsplus/HfsPlusWriter.h"
#include "platform/discrecording/iso9660/HierarchyWriter.h"
#include "platform/discrecording/iso9660/VolumeDescriptorSet.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/planning/DvdVideoOrder.h"
#include "platform/discrecording/planning/PlanReport.h"
#include "platform/discrecording/planning/PlannedImage.h"
#include "platform/discrecording/udf/UdfWriter.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <QDateTime>
#include <QVariant>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <system_error>
#include <thread>

namespace Tessaron
{

namespace
{

using Writers = std::vector<std::unique_ptr<FilesystemWriter>>;

NSError planError(OSStatus status, const QString &what, const QString &suggestion)
{
    return NSError(NSOSStatusErrorDomain, status,
                   {{NSLocalizedDescriptionKey, what}, {NSLocalizedRecoverySuggestionErrorKey, suggestion}});
}

FileTime volumeTimeOf(const DRFolder &root, const PlanOptions &options)
{
    const QDateTime set = root.propertyForKey(DRVolumeCreationDate, DRISO9660).toDateTime();
    if (set.isValid())
        return {set.toSecsSinceEpoch(), 0};
    if (options.sourceDateEpoch)
        return {*options.sourceDateEpoch, 0};
    return {QDateTime::currentSecsSinceEpoch(), 0};
}

/// The level that was asked for; no value when none was, or one that does not exist.
std::optional<Iso9660Level> levelOf(const DRFolder &root)
{
    bool isNumber = false;
    const int level = root.propertyForKey(DRISOLevel, DRISO9660).toInt(&isNumber);
    if (!isNumber || level < 1 || level > 3)
        return std::nullopt;
    return static_cast<Iso9660Level>(level);
}

/// One run of planning: the steps share what they make.
class Planner
{
public:
    Planner(const DRFolder &root, const PlanOptions &options, const PlanProgress &progress)
        : m_root(root)
        , m_options(options)
        , m_progress(progress)
    {
    }

    DiscImagePlan plan(NSError *error)
    {
        if (!checkFirstBlock(error) || !makeTree(error) || !chooseFilesystems(error))
            return {};
        makeWriters();
        if (!prepareWriters() || !layOut(error))
            return {};
        return result();
    }

private:
    [[nodiscard]] bool checkFirstBlock(NSError *error) const;
    bool makeTree(NSError *error);
    bool chooseFilesystems(NSError *error);
    void makeWriters();
    bool prepareWriters();
    bool layOut(NSError *error);
    void placeFiles();
    void reportAbsent();
    [[nodiscard]] std::uint8_t writtenTrees() const;
    [[nodiscard]] std::vector<NamedTree> namedTrees() const;
    /// The first tree that may hold the object; the first of all when none may.
    [[nodiscard]] DRDiscTree firstTreeOf(NodeIndex node, const std::vector<NamedTree> &trees) const;
    DiscImagePlan result();

    const DRFolder &m_root;
    const PlanOptions &m_options;
    const PlanProgress &m_progress;
    std::shared_ptr<ContentTree> m_tree;
    DRFilesystemMask m_filesystems = 0; ///< that are written
    Writers m_writers;
    StorageIssues m_issues;
    ImageLayout m_layout;
    std::vector<NodeIndex> m_files; ///< with extents of their own, in the order of these
};

bool Planner::checkFirstBlock(NSError *error) const
{
    const std::int64_t first = m_options.firstBlock.number();
    if (first >= 0 && first <= std::numeric_limits<std::uint32_t>::max())
        return true;
    *error = planError(paramErr, QStringLiteral("No filesystem can begin at block %1 of a disc.").arg(first),
                       QStringLiteral("Begin the track at block 0 or behind it."));
    return false;
}

bool Planner::makeTree(NSError *error)
{
    ContentTreeBuilder builder(m_progress, volumeTimeOf(m_root, m_options), m_options.sourceDateEpoch,
                               m_options.threadCount);
    if (m_options.rockRidge && m_root.propertyForKey(DRRelocatesDeepFolders, DRISO9660).toBool())
        builder.relocateDeepFolders();
    m_tree = builder.build(m_root, m_issues);
    if (!m_tree)
        return false;
    if (m_tree->nodes[0].kind != ContentKind::Absent)
        return true;
    const QString path = stringWithFileSystemRepresentation(lastKnownPath(m_tree->sourceRef(0)));
    *error = planError(m_issues.front().reason == StorageReason::Vanished ? fnfErr : afpAccessDenied,
                       QStringLiteral("The folder “%1” cannot be listed.").arg(displayableText(path)),
                       QStringLiteral("Make sure that it is there and that you may read it, and try again."));
    return false;
}

bool Planner::chooseFilesystems(NSError *error)
{
    const DRFilesystemMask allowed = m_options.filesystems & DRFilesystemInclusionMaskAll;
    DRFilesystemMask contents = 0;
    completeFilesystemMasks(*m_tree, &contents);
    // An empty image has all that are allowed; an object that no filesystem may hold does not ask for one.
    m_filesystems = contents == 0 ? allowed : allowed & contents;
    constexpr DRFilesystemMask leadingAnywhere = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet;
    if (m_tree->hasObjectsOnDisc && (m_filesystems & ~leadingAnywhere) != 0) {
        *error =
            planError(paramErr, QStringLiteral("UDF and HFS+ cannot lead to files of the disc's earlier sessions."),
                      QStringLiteral("Write ISO 9660 and Joliet alone."));
        return false;
    }
    if (m_filesystems != 0) {
        ContentNode &root = m_tree->nodes[0];
        root.masks = static_cast<std::uint8_t>(root.masks | m_filesystems);
        return true;
    }
    *error = planError(
        paramErr, QStringLiteral("The disc would be empty: none of its filesystems may hold any of the items."),
        QStringLiteral("Choose other filesystems for the disc, or let the items be in those that it has."));
    return false;
}

void Planner::makeWriters()
{
    const VolumeTexts texts = volumeTextsOf(m_root);
    const auto firstBlock = static_cast<std::uint32_t>(m_options.firstBlock.number());
    if ((m_filesystems & DRFilesystemInclusionMaskISO9660) != 0) {
        HierarchyTraits traits;
        traits.firstBlock = firstBlock;
        traits.level = levelOf(m_root).value_or(Iso9660Level::Two);
        traits.wantsOneSection = levelOf(m_root).value_or(Iso9660Level::Three) < Iso9660Level::Three;
        traits.hasRockRidge = m_options.rockRidge;
        m_writers.push_back(std::make_unique<HierarchyWriter>(m_tree, traits, texts));
    } else if ((m_filesystems & DRFilesystemInclusionMaskJoliet) != 0) {
        // A supplementary volume descriptor follows a primary one (ECMA-119 6.7.1): without it programs find nothing.
        HierarchyTraits traits;
        traits.firstBlock = firstBlock;
        traits.filesystem = 0;
        m_writers.push_back(std::make_unique<HierarchyWriter>(m_tree, traits, texts));
    }
    if ((m_filesystems & DRFilesystemInclusionMaskJoliet) != 0) {
        HierarchyTraits traits;
        traits.firstBlock = firstBlock;
        traits.tree = DRDiscTree::Joliet;
        traits.filesystem = DRFilesystemInclusionMaskJoliet;
        traits.coding = NameCoding::Joliet;
        m_writers.push_back(std::make_unique<HierarchyWriter>(m_tree, traits, texts));
    }
    if ((m_filesystems & DRFilesystemInclusionMaskUDF) != 0)
        m_writers.push_back(std::make_unique<UdfWriter>(m_tree, texts, firstBlock));
    // Behind the others, whose blocks it accounts for.
    if ((m_filesystems & DRFilesystemInclusionMaskHFSPlus) != 0) {
        const bool isAlone = m_filesystems == DRFilesystemInclusionMaskHFSPlus;
        m_writers.push_back(
            std::make_unique<HfsPlusWriter>(m_tree, isAlone ? HfsPlusAccess::WrapperAndMap : HfsPlusAccess::MapAlone));
    }
    // Last, so that it ends before the writers that it points to.
    std::vector<const FilesystemWriter *> all;
    for (const auto &writer : m_writers)
        all.push_back(writer.get());
    m_writers.push_back(std::make_unique<VolumeDescriptorSet>(all));
}

/// False when the system has no thread to give.
template <typename Function>
bool startThread(std::vector<std::jthread> &threads, Function &&function)
{
    try {
        threads.emplace_back(std::forward<Function>(function));
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

bool Planner::prepareWriters()
{
    // Trees are independent of each other; a thread for each is worth it from some thousand objects on.
    constexpr std::uint32_t objectsWorthThreads = 4096;
    const bool usesThreads = m_options.threadCount > 1 && m_tree->nodes.size() >= objectsWorthThreads;
    std::vector<StorageIssues> issues(m_writers.size());
    std::vector<char> isDone(m_writers.size(), 0);
    const auto prepare = [&](std::size_t index) {
        isDone[index] = m_writers[index]->prepare(m_progress, issues[index]) ? 1 : 0;
    };
    WorkerFailures failures;
    {
        std::vector<std::jthread> threads;
        for (std::size_t index = 1; index < m_writers.size(); ++index) {
            if (!usesThreads || !startThread(threads, [&, index] { failures.run([&] { prepare(index); }); }))
                failures.run([&] { prepare(index); });
        }
        failures.run([&] { prepare(0); });
    }
    failures.rethrow();
    if (std::find(isDone.begin(), isDone.end(), 0) != isDone.end())
        return false;
    reportAbsent();
    for (const StorageIssues &found : issues)
        m_issues.insert(m_issues.end(), found.begin(), found.end());
    m_progress.tell(0.9);
    return true;
}

std::vector<NamedTree> Planner::namedTrees() const
{
    std::vector<NamedTree> trees;
    for (const auto &writer : m_writers) {
        for (NamedTree &tree : writer->trees())
            trees.push_back(std::move(tree));
    }
    return trees;
}

DRDiscTree Planner::firstTreeOf(NodeIndex node, const std::vector<NamedTree> &trees) const
{
    const DRFilesystemMask wanted = m_tree->nodes[node].filesystems();
    const auto holder = std::find_if(trees.begin(), trees.end(),
                                     [&](const NamedTree &tree) { return (tree.filesystem & wanted) != 0; });
    return holder != trees.end() ? holder->tree : trees.front().tree;
}

/// Names the trees in which the absent objects are missing, and finds those that no filesystem of the disc may hold.
void Planner::reportAbsent()
{
    const std::vector<NamedTree> trees = namedTrees();
    for (StorageIssue &issue : m_issues)
        issue.tree = firstTreeOf(issue.node, trees);
    for (NodeIndex node = 1; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (content.kind != ContentKind::Absent && (content.filesystems() & m_filesystems) == 0)
            m_issues.push_back(
                {node, trees.front().tree, DRStorageReportItem::Kind::Refused, StorageReason::NoFilesystem, false});
    }
}

/// Extents of big files begin at whole units of the page cache, in which the kernel copies a fifth faster than from a
/// page's middle to another's. At most 0.4 % of such a file's size is left unused before it.
constexpr std::uint64_t sizeWorthAligning = std::uint64_t{16} << 20;
constexpr std::uint64_t roundedUpToAlignment(std::uint64_t block)
{
    constexpr std::uint64_t unit = (std::uint64_t{64} << 10) / logicalBlockSize;
    return (block + unit - 1) / unit * unit;
}

/// Gives every file that is on the disc its extent: those of DVD-Video first; then the files of a folder lie together,
/// in the order of their names, before those of its folders.
void Planner::placeFiles()
{
    for (const NodeIndex file : placeDvdVideoFiles(*m_tree, m_filesystems, m_layout, m_files))
        m_issues.push_back({file, firstTreeOf(file, namedTrees()), DRStorageReportItem::Kind::Altered,
                            StorageReason::VideoAddressNotMet, false});
    std::vector<NodeIndex> folders{0};
    while (!folders.empty()) {
        const ContentNode folder = m_tree->nodes[folders.back()];
        folders.pop_back();
        const std::size_t mark = folders.size();
        for (NodeIndex node = folder.firstChild(); node < folder.endChild(); ++node) {
            const ContentNode &content = m_tree->nodes[node];
            if (content.kind == ContentKind::Absent || (content.filesystems() & m_filesystems) == 0)
                continue;
            if (content.isFolder()) {
                folders.push_back(node);
                continue;
            }
            ContentNode &owner = m_tree->nodes[content.contentsOwner()];
            // The extent of a file is 0 until it has one: the first of several names places it.
            if (!content.isFile() || content.fileSize() == 0 || owner.hasExtent())
                continue;
            if (content.fileSize() >= sizeWorthAligning)
                m_layout.leaveUnusedUpTo(roundedUpToAlignment(m_layout.allocateExtent(0)));
            owner.setExtentStart(
                static_cast<std::uint32_t>(m_layout.allocateExtent(blocksForBytes(content.fileSize()))));
            m_files.push_back(content.contentsOwner());
        }
        std::reverse(folders.begin() + static_cast<std::ptrdiff_t>(mark), folders.end());
    }
}

std::uint8_t Planner::writtenTrees() const
{
    unsigned int trees = 0;
    if ((m_filesystems & DRFilesystemInclusionMaskISO9660) != 0)
        trees |= m_options.rockRidge ? ImageTreeISO9660 | ImageTreeRockRidge : ImageTreeISO9660;
    if ((m_filesystems & DRFilesystemInclusionMaskJoliet) != 0)
        trees |= ImageTreeJoliet;
    if ((m_filesystems & DRFilesystemInclusionMaskUDF) != 0)
        trees |= ImageTreeUDF;
    if ((m_filesystems & DRFilesystemInclusionMaskHFSPlus) != 0)
        trees |= ImageTreeHFSPlus;
    return static_cast<std::uint8_t>(trees);
}

bool Planner::layOut(NSError *error)
{
    for (const auto &writer : m_writers) {
        *error = writer->obstacle();
        if (*error)
            return false;
    }
    for (const auto &writer : m_writers)
        writer->placeFixed(m_layout);
    for (const auto &writer : m_writers)
        writer->place(m_layout);
    placeFiles();
    for (const auto &writer : m_writers)
        writer->placeLast(m_layout, m_options.trailingPaddingBlocks);
    m_layout.finish(m_options.trailingPaddingBlocks);
    const std::uint64_t end = std::uint64_t(m_options.firstBlock.number()) + m_layout.blockCount();
    if (end > std::numeric_limits<std::uint32_t>::max()) {
        *error = planError(dskFulErr,
                           QStringLiteral("The disc would be larger than the 8 TiB that its filesystems can hold."),
                           QStringLiteral("Put fewer files onto it."));
        return false;
    }
    ImageFacts facts;
    facts.blocks = static_cast<std::uint32_t>(m_layout.blockCount());
    facts.firstBlock = static_cast<std::uint32_t>(m_options.firstBlock.number());
    facts.trees = writtenTrees();
    facts.time = m_tree->volumeTime;
    for (const auto &writer : m_writers)
        writer->didPlaceFiles(facts);
    m_files.shrink_to_fit();
    return !m_progress.isCancelled();
}

DiscImagePlan Planner::result()
{
    DiscImagePlan plan;
    for (NodeIndex node = 1; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (content.kind == ContentKind::Absent || (content.filesystems() & m_filesystems) == 0)
            continue;
        if (node == m_tree->relocationFolder && m_tree->hidesRelocationFolder)
            continue; // not of the layout
        ++(content.isFolder() ? plan.folderCount : plan.fileCount);
    }
    const auto report = std::make_shared<PlanReport>(m_tree, namedTrees(), std::move(m_issues));
    plan.fileCount -= report->refusedEverywhere(); // folders are refused nowhere
    plan.report = report;
    plan.image = std::make_shared<PlannedImage>(m_tree, std::move(m_writers), std::move(m_layout), std::move(m_files),
                                                m_options.bigFileSize);
    m_progress.tell(1.0);
    return plan;
}

} // namespace

std::optional<std::int64_t> sourceDateEpochFromEnvironment()
{
    const char *const value = std::getenv("SOURCE_DATE_EPOCH");
    const std::string_view text = value ? value : "";
    std::int64_t seconds = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (text.empty() || status != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return seconds;
}

DiscImagePlan planDiscImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options,
                            const std::stop_token &cancellation, const std::function<void(double)> &reportProgress,
                            NSError *error)
{
    *error = {};
    if (!root) {
        *error = planError(paramErr, QStringLiteral("There is nothing to make a disc of."),
                           QStringLiteral("Give a folder."));
        return {};
    }
    const PlanProgress progress(cancellation, reportProgress);
    return Planner(*root, options, progress).plan(error);
}

} // namespace Tessaron
