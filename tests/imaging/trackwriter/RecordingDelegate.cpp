#include "tests/imaging/trackwriter/RecordingDelegate.h"

#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

void RecordingDelegate::note(const QString &what)
{
    if (heard.isEmpty() || heard.last() != what)
        heard << what;
}

void RecordingDelegate::noteEnd(const QString &what, KRTrackWriter &writer)
{
    heard << what; // twice would show
    m_isOver = true;
    if (onEnd)
        onEnd(writer);
}

KRTrackWriterDelegate RecordingDelegate::callbacks()
{
    KRTrackWriterDelegate delegate;
    delegate.KRTrackWriterWritingProgress = [this](KRTrackWriter &, float value) {
        progress.push_back(value);
        note(QStringLiteral("progress"));
    };
    delegate.KRTrackWriterWritingDidEnd = [this](KRTrackWriter &writer) { noteEnd(QStringLiteral("end"), writer); };
    delegate.KRTrackWriterDidCancel = [this](KRTrackWriter &writer) { noteEnd(QStringLiteral("cancel"), writer); };
    delegate.KRTrackWriterWritingDidFailWithError = [this](KRTrackWriter &writer, const NSError &given) {
        error = given;
        noteEnd(QStringLiteral("failure"), writer);
    };
    return delegate;
}

void RecordingDelegate::waitForEnd()
{
    EXPECT_TRUE(runEventLoopUntil([this] { return m_isOver; }));
    drainEventLoop();
}

} // namespace Tessaron::Testing
