#include "platform/foundation/NSBundle.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

#include <TessaronClassesUI/AudioConverterSheet.h>
#include <gtest/gtest.h>
#include <set>

using namespace Tessaron;

namespace
{

class AudioConverterSheetTest : public testing::Test
{
protected:
    AudioConverterSheetTest()
    {
        NSBundle::setMainBundlePath(folder.path());
        converter->setInterfaceLoader(loadAudioConverterInterface);
        converter->setSheetModal(&window);
        converter->setUseStandardUI(true);
        KRAudioConverterDelegate delegate;
        delegate.KRAudioConverterDidEnd = [this](KRAudioConverter &) { events << QStringLiteral("end"); };
        delegate.KRAudioConverterDidAbort = [this](KRAudioConverter &) { events << QStringLiteral("abort"); };
        converter->setDelegate(delegate);
        window.resize(600, 400);
        window.show();
    }

    /// Starts a conversion by a tool that runs until it is killed.
    void begin()
    {
        const QString path = folder.filePath(QStringLiteral("Resources/QrlMov2Wav.app/Contents/MacOS"));
        ASSERT_TRUE(QDir().mkpath(path));
        QFile tool(path + QStringLiteral("/QrlMov2Wav"));
        ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
        tool.write("#!/bin/sh\nexec sleep 1000\n");
        tool.close();
        ASSERT_TRUE(tool.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        converter->convertAudioFiles(QStringList{QStringLiteral("/a.flac")},
                                     QStringList{folder.filePath(QStringLiteral("a.wav"))}, 0);
        win = window.findChild<QDialog *>(QStringLiteral("win"));
        ASSERT_TRUE(win);
        bar = win->findChild<QProgressBar *>(QStringLiteral("progIndic"));
        cancel = win->findChild<QPushButton *>(QStringLiteral("cancelButton"));
        ASSERT_TRUE(bar && cancel);
    }
    [[nodiscard]] bool waitUntil(const std::function<bool()> &condition)
    {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 30000)
            QApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    }

    QTemporaryDir folder;
    QWidget window;
    QPointer<QDialog> win;
    QProgressBar *bar = nullptr;
    QPushButton *cancel = nullptr;
    QStringList events;
    std::shared_ptr<KRAudioConverter> converter = KRAudioConverter::init();
};

} // namespace

TEST_F(AudioConverterSheetTest, sheet_isModalForItsWindowAndShowsBarAndButton)
{
    begin();
    EXPECT_TRUE(win->isVisible());
    EXPECT_EQ(win->windowModality(), Qt::WindowModal);
    EXPECT_EQ(win->parentWidget(), &window);
    EXPECT_TRUE(bar->isVisible() && cancel->isVisible() && cancel->isEnabled());
    EXPECT_EQ(bar->maximum(), 0) << "only that something is going on";
    EXPECT_FALSE(cancel->text().isEmpty());
    ASSERT_TRUE(waitUntil([this] { return bar->width() >= 300; }));
    EXPECT_TRUE(win->rect().contains(bar->geometry()) && win->rect().contains(cancel->geometry()));
    EXPECT_FALSE(bar->geometry().intersects(cancel->geometry()));
}

/// What is painted, in each language: the frame of the bar, its filled half in another colour than its empty one, and
/// the letters of the button. TESSARON_SCREENSHOTS names a folder to look at the pictures in.
TEST_F(AudioConverterSheetTest, picture_showsBarAndButton)
{
    for (const char *const language : {"en", "de"}) {
        NSBundle::frameworkBundle()->setPreferredLanguages({QString::fromLatin1(language)});
        events.clear();
        begin();
        bar->setRange(0, 1000);
        bar->setValue(500);
        ASSERT_TRUE(waitUntil([this] { return bar->width() >= 300 && bar->value() == 500; }));
        const QImage picture = win->grab().toImage();
        if (const QString places = qEnvironmentVariable("TESSARON_SCREENSHOTS"); !places.isEmpty()) {
            EXPECT_TRUE(picture.save(places + QStringLiteral("/audioConverter-%1.png").arg(QLatin1String(language))));
        }
        const qreal scale = picture.devicePixelRatio();
        const auto part = [&](const QWidget *widget) {
            const QRect place(widget->mapTo(win.data(), QPoint()), widget->size());
            return picture.copy(QRect(place.topLeft() * scale, place.size() * scale));
        };
        const QImage barPicture = part(bar), buttonPicture = part(cancel);
        const int row = barPicture.height() / 2;
        EXPECT_NE(barPicture.pixel(barPicture.width() / 4, row), barPicture.pixel(barPicture.width() * 3 / 4, row))
            << "the bar is half full";
        EXPECT_EQ(barPicture.pixel(barPicture.width() / 4, row), barPicture.pixel(barPicture.width() * 2 / 5, row));
        std::set<QRgb> colours;
        for (int y = buttonPicture.height() / 4; y < buttonPicture.height() * 3 / 4; ++y) {
            for (int x = buttonPicture.width() / 4; x < buttonPicture.width() * 3 / 4; ++x)
                colours.insert(buttonPicture.pixel(x, y));
        }
        EXPECT_GT(colours.size(), 4u) << "letters stand on the button";
        converter->abort();
        EXPECT_TRUE(waitUntil([this] { return !events.isEmpty() && win.isNull(); }));
    }
}

TEST_F(AudioConverterSheetTest, cancelButton_abortsAndTakesTheSheetAway)
{
    begin();
    cancel->click();
    EXPECT_TRUE(waitUntil([this] { return !events.isEmpty(); }));
    EXPECT_EQ(events, QStringList{QStringLiteral("abort")});
    EXPECT_TRUE(waitUntil([this] { return win.isNull(); }));
}

TEST_F(AudioConverterSheetTest, closingTheSheet_abortsToo)
{
    begin();
    win->close();
    EXPECT_TRUE(waitUntil([this] { return !events.isEmpty(); }));
    EXPECT_EQ(events, QStringList{QStringLiteral("abort")});
}

TEST_F(AudioConverterSheetTest, progress_movesTheBar)
{
    begin();
    const std::unique_ptr<KRAudioConverterInterface> sheet = loadAudioConverterInterface(*converter);
    ASSERT_TRUE(sheet);
    sheet->beginSheet(window);
    EXPECT_TRUE(sheet->isIndeterminate());
    sheet->setIndeterminate(false);
    EXPECT_FALSE(sheet->isIndeterminate());
    sheet->setDoubleValue(0.25);
    const QProgressBar *const second = window.findChildren<QDialog *>().last()->findChild<QProgressBar *>();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->value() * 4, second->maximum());
    sheet->setCancelButtonEnabled(false);
    sheet->endSheetAndClose();
    EXPECT_TRUE(events.isEmpty()) << "the program closes it, not its user";
    converter->abort();
    EXPECT_TRUE(waitUntil([this] { return !events.isEmpty(); }));
}

TEST_F(AudioConverterSheetTest, sheet_goesWithItsWindow)
{
    auto other = std::make_unique<QWidget>();
    const std::unique_ptr<KRAudioConverterInterface> sheet = loadAudioConverterInterface(*converter);
    ASSERT_TRUE(sheet);
    sheet->beginSheet(*other);
    other.reset();
    sheet->setDoubleValue(0.5);
    sheet->setCancelButtonEnabled(false);
    sheet->endSheetAndClose();
}

TEST_F(AudioConverterSheetTest, sheet_isInTheUsersLanguage)
{
    NSBundle::frameworkBundle()->setPreferredLanguages({QStringLiteral("de-AT")});
    begin();
    EXPECT_EQ(cancel->text(), QStringLiteral("Abbrechen"));
    converter->abort();
    EXPECT_TRUE(waitUntil([this] { return !events.isEmpty(); }));
}
