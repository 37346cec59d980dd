#include "tests/imaging/layoutwriter/LayoutWriterFixture.h"

#include "tests/support/EventLoop.h"

#include <cstring>

namespace Tessaron::Testing
{

namespace
{

/// Delivers the letter x.
class LetterProducer final : public DRTrackProducer
{
public:
    std::uint32_t produceDataForTrack(DRTrack *, char *intoBuffer, std::uint32_t length, std::uint64_t, std::uint32_t,
                                      std::uint32_t *) override
    {
        std::memset(intoBuffer, 'x', length);
        return length;
    }
};

} // namespace

bool ScriptedPanel::createLayoutAsyncAndNotifyLayoutCreationManager(
    const std::weak_ptr<TessaronLayoutCreationManager> &creationManager)
{
    asked.append(QStringLiteral("async"));
    manager = creationManager;
    if (onStart)
        onStart();
    return starts;
}

bool ScriptedPanel::cancelLayoutCreationAsync()
{
    asked.append(QStringLiteral("cancel"));
    return canCancel;
}

DRLayout ScriptedPanel::createLayoutSync(NSError *creationError)
{
    asked.append(QStringLiteral("sync"));
    *creationError = error;
    return layout;
}

LayoutWriterFixture::LayoutWriterFixture()
{
    panel->layout = layoutOfBlocks(16);
    KRLayoutWriterDelegate delegate;
    delegate.KRLayoutWriterProgress = [this](KRLayoutWriter &, float value) {
        progress.push_back(value);
        if (heard.isEmpty() || heard.last() != QLatin1String("progress"))
            heard.append(QStringLiteral("progress"));
        if (const auto action = std::exchange(onProgress, nullptr))
            action();
    };
    delegate.KRLayoutWriterDidFinishWritingLayout = [this](KRLayoutWriter &) { noteEnd(QStringLiteral("finish")); };
    delegate.KRLayoutWriterDidCancel = [this](KRLayoutWriter &) { noteEnd(QStringLiteral("cancel")); };
    delegate.KRLayoutWriterDidFailWithError = [this](KRLayoutWriter &, const NSError &failure) {
        error = failure;
        noteEnd(QStringLiteral("fail"));
    };
    delegate.KRLayoutWriterDidNotCompleteImage = [this](KRLayoutWriter &, const NSError &failure) {
        error = failure;
        heard.append(QStringLiteral("lack"));
    };
    writer->setDelegate(delegate);
}

DRLayout LayoutWriterFixture::layoutOfBlocks(quint64 blocks)
{
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(std::make_shared<LetterProducer>());
    track->setProperties({{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, blocks}});
    return track;
}

void LayoutWriterFixture::waitForEnd()
{
    EXPECT_TRUE(runEventLoopUntil([this] { return isOver; }));
    drainEventLoop();
}

NSError LayoutWriterFixture::start(TessaronDiscImageFormat format)
{
    tree.makeFile(fileName, "what was there before");
    return writer->writeLayoutToFSRef(refOf(fileName), panel, format);
}

FSRef LayoutWriterFixture::refOf(const QByteArray &relative) const
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(tree.path(relative), &ref, nullptr), noErr);
    return ref;
}

void LayoutWriterFixture::noteEnd(const QString &what)
{
    heard.append(what);
    isOver = true;
    if (const auto action = std::exchange(onEnd, nullptr))
        action();
}

} // namespace Tessaron::Testing
