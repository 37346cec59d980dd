#pragma once

#include "app/BurnDialog.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/JobRunner.h"
#include "app/MainWindow.h"

#include "tests/fakedrive/FakeDisc.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QUndoStack>

#include <gtest/gtest.h>
#include <optional>

namespace Tessaron::Testing
{

inline constexpr int cdBlocks = 359'849;
inline constexpr int dvdBlocks = 2'295'104;
inline const QByteArray drivePath = QByteArrayLiteral("/dev/sr0");

/// The program's window, and a drive with a disc of the test's choice in it; see FakeDrive.cpp for what that drive
/// shows and what it does not.
class BurnDialogFixture : public testing::Test
{
protected:
    BurnDialogFixture()
    {
        tree.makeFile("photos/beach.jpg", QByteArray(300'000, 'b'));
        tree.makeFile("letter.txt", "Dear reader,\n");
        tree.makeFolder("drive");
        qputenv("TESSARON_FAKE_DRIVE", tree.path("drive"));
        QObject::connect(&window, &Desktop::MainWindow::jobEnded, &window,
                         [this](const Desktop::JobOutcome &ended) { outcome = ended; });
    }

    void insert(const FakeDisc &disc) const { disc.save(tree.path("drive").toStdString()); }
    void insert(FakeProfile profile, int capacity, FakeDisc::Status status = FakeDisc::Status::Blank) const
    {
        FakeDisc disc;
        disc.profile = profile;
        disc.capacity = capacity;
        disc.status = status;
        disc.isFormatted = disc.isOverwritable();
        if (status == FakeDisc::Status::Complete)
            disc.tracks = {{1, 1, 0, 1000, false}};
        insert(disc);
    }
    [[nodiscard]] FakeDisc disc() const { return FakeDisc::load(tree.path("drive").toStdString()); }

    void add(const QList<QByteArray> &paths)
    {
        window.openFiles(paths);
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.dataPanel().dataView().intake().isRunning(); }));
    }
    void takeEverythingOut() const
    {
        QUndoStack &steps = window.dataPanel().document().undoStack();
        while (steps.canUndo())
            steps.undo();
    }
    [[nodiscard]] Desktop::BurnSubject subject() const
    {
        const std::optional<Desktop::BurnSubject> found = window.dataPanel().burnSubject();
        EXPECT_TRUE(found);
        return found.value_or(Desktop::BurnSubject());
    }
    /// A dialog that has looked into the drive.
    [[nodiscard]] std::unique_ptr<Desktop::BurnDialog> dialog() const
    {
        auto shown = std::make_unique<Desktop::BurnDialog>(subject());
        shown->show();
        DriveFacts facts;
        facts.drive.path = drivePath;
        facts.drive.vendor = QStringLiteral("MAKER");
        shown->showDrives({facts});
        waitFor(*shown);
        return shown;
    }
    /// The dialog that the window asks by; null when it asks nothing.
    [[nodiscard]] Desktop::BurnDialog *shownDialog() const
    {
        for (Desktop::BurnDialog *const each : window.findChildren<Desktop::BurnDialog *>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }
    static void lookIntoDrive(Desktop::BurnDialog &dialog)
    {
        DriveFacts facts;
        facts.drive.path = drivePath;
        dialog.showDrives({facts});
        waitFor(dialog);
    }
    static void waitFor(const Desktop::BurnDialog &dialog)
    {
        EXPECT_TRUE(runEventLoopUntil([&dialog] { return !dialog.isBusy(); }));
    }
    void burn(BurnDiscOrder settings = {}, DiscFamily family = DiscFamily::DVDPlusR)
    {
        outcome.reset();
        settings.drive = drivePath;
        window.burnDisc(subject(), settings, family);
    }
    void waitForOutcome()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }, std::chrono::minutes(2)));
    }
    /// Answers the question that the window asks; false when it asks none.
    static bool answer(QWidget &parent, QMessageBox::ButtonRole role)
    {
        auto *const question = parent.findChild<QMessageBox *>();
        if (!question)
            return false;
        for (QAbstractButton *const button : question->buttons()) {
            if (question->buttonRole(button) == role) {
                button->click();
                return true;
            }
        }
        return false;
    }

    const TemporaryTree tree;
    Desktop::MainWindow window;
    std::optional<Desktop::JobOutcome> outcome;
};

} // namespace Tessaron::Testing
