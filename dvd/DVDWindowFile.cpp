#include "dvd/DVDWindowFile.h"

#include "platform/foundation/NSBundle.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QUiLoader>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <initializer_list>

namespace Tessaron
{

namespace
{

/// Makes the windows and views of the player besides those of Qt.
class Loader : public QUiLoader
{
public:
    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override
    {
        QWidget *widget = nullptr;
        if (className == QStringLiteral("VideoWindow")) {
            auto *const window = new VideoWindow;
            // Until the file is loaded, so that it ends with the others if that fails.
            window->setParent(parent, window->windowFlags());
            widget = window;
        } else if (className == QStringLiteral("ControlWindow")) {
            widget = new ControlWindow(parent);
        } else if (className == QStringLiteral("PlaybackTime")) {
            widget = new PlaybackTime(parent);
        } else {
            return QUiLoader::createWidget(className, parent, name);
        }
        widget->setObjectName(name);
        return widget;
    }
};

DVDControllerOutlets outletsIn(const QWidget &file)
{
    DVDControllerOutlets outlets;
    outlets.mPlayButton = file.findChild<QAbstractButton *>(QStringLiteral("mPlayButton"));
    outlets.mAudioControl = file.findChild<QSlider *>(QStringLiteral("mAudioControl"));
    outlets.mSceneText = file.findChild<QLabel *>(QStringLiteral("mSceneText"));
    outlets.mTitleText = file.findChild<QLabel *>(QStringLiteral("mTitleText"));
    outlets.mControlWindow = file.findChild<ControlWindow *>(QStringLiteral("mControlWindow"));
    outlets.mTimeText = file.findChild<PlaybackTime *>(QStringLiteral("mTimeText"));
    outlets.mVideoWindow = file.findChild<VideoWindow *>(QStringLiteral("mVideoWindow"));
    return outlets;
}

bool isComplete(const DVDControllerOutlets &outlets)
{
    return outlets.mPlayButton && outlets.mAudioControl && outlets.mSceneText && outlets.mTitleText
        && outlets.mControlWindow && outlets.mTimeText && outlets.mVideoWindow;
}

void makeWindow(QWidget *window)
{
    window->setParent(nullptr, window->windowFlags());
}

} // namespace

std::unique_ptr<DVDWindowFile> DVDWindowFile::load()
{
    QFile file(NSBundle::frameworkBundle()->pathForResource(QStringLiteral("dvdWin"), QStringLiteral("ui")));
    Loader loader;
    const std::unique_ptr<QWidget> loaded(file.open(QIODevice::ReadOnly) ? loader.load(&file) : nullptr);
    auto windows = std::make_unique<DVDWindowFile>();
    if (loaded)
        windows->outlets = outletsIn(*loaded);
    if (!isComplete(windows->outlets)) {
        qWarning("the interface file \"dvdWin\" cannot be loaded, or has not the parts that it needs: %s",
                 qUtf8Printable(loader.errorString()));
        windows->outlets = {};
        return nullptr;
    }
    for (QObject *const object : loaded->findChildren<QObject *>()) {
        if (object->property("action").isValid())
            windows->controls.push_back(object);
        if (auto *const menu = qobject_cast<QMenu *>(object))
            windows->menus.push_back(menu);
    }
    makeWindow(windows->outlets.mControlWindow);
    makeWindow(windows->outlets.mVideoWindow);
    for (QObject *const control : windows->controls) {
        if (auto *const item = qobject_cast<QAction *>(control)) {
            item->setParent(windows->outlets.mControlWindow); // it belonged to the file
            windows->outlets.mVideoWindow->addAction(item);
        }
    }
    windows->outlets.mVideoWindow->setContextMenuPolicy(Qt::CustomContextMenu);
    return windows;
}

DVDWindowFile::~DVDWindowFile()
{
    for (QWidget *const window :
         std::initializer_list<QWidget *>{outlets.mControlWindow.data(), outlets.mVideoWindow.data()}) {
        if (!window)
            continue;
        window->hide();
        window->deleteLater(); // One of its signals may have led here.
    }
}

void DVDWindowFile::awaken() const
{
    // Qt would tell the size that the file gives as a change when the window is first shown, and there may be no
    // session yet that could be told of it.
    outlets.mVideoWindow->setAttribute(Qt::WA_PendingResizeEvent, false);
    outlets.mVideoWindow->setAttribute(Qt::WA_PendingMoveEvent, false);
    outlets.mVideoWindow->awakeFromNib();
    outlets.mControlWindow->awakeFromNib();
    for (QWidget *const window :
         std::initializer_list<QWidget *>{outlets.mControlWindow.data(), outlets.mVideoWindow.data()}) {
        if (window->property("visibleAtLaunch").toBool())
            window->show();
    }
}

} // namespace Tessaron
