#pragma once

#include "app/AudioPanel.h"
#include "app/MainWindow.h"

#include "tests/app/Waves.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <optional>

namespace Tessaron::Testing
{

/// A window that shows the panel for audio CDs, and three sounds of 5, 6 and 7 seconds.
class AudioPanelFixture : public testing::Test
{
protected:
    AudioPanelFixture()
    {
        tree.makeFile("a.wav", waveOf(5, 1));
        tree.makeFile("b.wav", waveOf(6, 2));
        tree.makeFile("c.wav", waveOf(7, 3));
        tree.makeFolder("out");
        QObject::connect(&window, &Desktop::MainWindow::jobEnded, &window,
                         [this](const Desktop::JobOutcome &ended) { outcome = ended; });
        window.showPanel(1);
    }

    [[nodiscard]] Desktop::AudioPanel &panel() { return window.audioPanel(); }
    [[nodiscard]] Desktop::AudioTrackModel &model() { return panel().tracks(); }
    void add(const QList<QByteArray> &paths, int row = -1)
    {
        panel().addFiles(paths, row);
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    }
    [[nodiscard]] QStringList files()
    {
        QStringList names;
        for (int row = 0; row < model().rowCount(); ++row)
            names << model().index(row, Desktop::AudioTrackModel::File).data().toString();
        return names;
    }

    const TemporaryTree tree;
    Desktop::MainWindow window;
    std::optional<Desktop::JobOutcome> outcome;
};

} // namespace Tessaron::Testing
