#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{

/// Two screens side by side. The platform counts them in the order of their names.
constexpr char screens[] = R"({"synchronousWindowSystemEvents": false, "windowFrameMargins": true, "screens": [
{"name": "1 wide", "x": 0, "y": 0, "width": 1280, "height": 778,
 "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
{"name": "2 high", "x": 1280, "y": 0, "width": 1024, "height": 1000,
 "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("screens.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(screens) < 0)
        return 1;
    file.close();
    // Any other platform is a person's wish, to see the windows.
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.isEmpty() || platform == "offscreen")
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toUtf8());
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
