#pragma once

#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRLayoutWriter.h>
#include <TessaronClasses/TessaronPanel.h>

#include <QStringList>

#include <gtest/gtest.h>
#include <vector>

namespace Tessaron::Testing
{

/// A panel that does as a test says and notes what it was asked.
class ScriptedPanel final : public TessaronPanel
{
public:
    bool canCreateLayoutAsync() override { return isAsync; }
    bool createLayoutAsyncAndNotifyLayoutCreationManager(
        const std::weak_ptr<TessaronLayoutCreationManager> &creationManager) override;
    bool cancelLayoutCreationAsync() override;
    DRLayout createLayoutSync(NSError *error) override;

    bool isAsync = false;
    bool starts = true;
    bool canCancel = true;
    DRLayout layout;
    NSError error;
    std::function<void()> onStart; ///< within the call that starts
    std::weak_ptr<TessaronLayoutCreationManager> manager;
    QStringList asked;
};

/// A writer, a panel, and a file to write to; what the delegate hears is noted in order.
class LayoutWriterFixture : public testing::Test
{
protected:
    LayoutWriterFixture();

    /// A layout of `blocks` blocks of 2048 bytes 'x'.
    [[nodiscard]] static DRLayout layoutOfBlocks(quint64 blocks);
    /// Waits until the delegate has heard of an end and the event loop is quiet.
    void waitForEnd();
    [[nodiscard]] NSError start(TessaronDiscImageFormat format);
    /// The reference of a file that the tree has.
    [[nodiscard]] FSRef refOf(const QByteArray &relative) const;

    TemporaryTree tree;
    QByteArray fileName = "disc.bin";
    std::shared_ptr<ScriptedPanel> panel = std::make_shared<ScriptedPanel>();
    std::shared_ptr<KRLayoutWriter> writer = KRLayoutWriter::layoutWriter();
    QStringList heard; ///< "progress" (a run of them once), "finish", "fail", "cancel"
    std::vector<float> progress;
    NSError error;
    std::function<void()> onProgress; ///< within the first such call
    std::function<void()> onEnd; ///< within the last call
    bool isOver = false;

private:
    void noteEnd(const QString &what);
};

} // namespace Tessaron::Testing
