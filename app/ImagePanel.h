#pragma once

#include "app/DesktopPanel.h"
#include "app/FileLending.h"
#include "app/ImageContentsModel.h"

#include <TessaronClasses/InspectJob.h>
#include <TessaronClasses/TracksJob.h>

#include <memory>

namespace Tessaron::Desktop
{

class ImageView;

/// The panel for images that are there: tells what is in one, compares it with a folder, takes tracks out, and has it
/// written to a disc.
class ImagePanel final : public DesktopPanel
{
public:
    ImagePanel();
    ~ImagePanel() override;

    /// Shows another image. It is looked at in the background.
    void openImage(const QByteArray &path);
    [[nodiscard]] QByteArray imagePath() const { return m_path; }
    [[nodiscard]] bool isLooking() const { return m_inspecting || m_finding; }
    [[nodiscard]] ImageContentsModel &contents() { return m_contents; }
    /// What is said of the image; empty without one.
    [[nodiscard]] QString summary() const { return m_summary; }
    /// Compares the image with what lies in a folder.
    void compareWithFolder(const QByteArray &folder);
    /// Takes files out into a folder: what is named, all of one filesystem, or everything.
    void takeOutFiles(const QList<ImagePlace> &places, const QByteArray &folder);
    /// Takes files of one filesystem out into a private folder and puts them onto the clipboard, for the file manager.
    void copyFiles(const QList<ImagePlace> &places);
    /// Lets what is chosen be dropped: at once where it has been taken out already, else as soon as it is, if the
    /// button is still held then, or by dragging it once more.
    void dragFiles(const QList<ImagePlace> &places);
    [[nodiscard]] const FileLending &lending() const { return m_lending; }
    /// Takes the track of the number out into a file, or, with 0, all of them into a folder.
    void takeOutTracks(std::uint32_t track, const QByteArray &output);

    /// True for the name of a file that holds or describes an image.
    [[nodiscard]] static bool isImageName(const QByteArray &path);

    // DesktopPanel
    [[nodiscard]] QString title() const override;
    [[nodiscard]] QString iconName() const override { return QStringLiteral("media-optical"); }
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] std::optional<BurnSubject> burnSubject() override;
    bool takeFiles(const QList<QByteArray> &paths) override;
    void letGo() override;

    // TessaronPanel
    [[nodiscard]] QWidget *view() override;
    [[nodiscard]] QList<QAction *> customActionMenuItems() override;
    [[nodiscard]] std::uint64_t bestSizeApproximation() override { return m_bytes; }
    [[nodiscard]] QString emptyDiscInformationMessage() override;

private:
    [[nodiscard]] ImageView &imageView();
    void inspected(const ImageInspection &result);
    void foundTracks(const TracksResult &result);
    void askForImage();
    void askForFolder();
    void askForDestination();
    void askForFilesFolder();
    [[nodiscard]] bool areOfOneFilesystem(const QList<ImagePlace> &places);
    void lend(const QList<ImagePlace> &places, FileLending::WhenReady whenReady);

    QByteArray m_path; ///< empty while no image is open
    QString m_summary;
    std::uint64_t m_bytes = 0; ///< that a disc with it will have; 0 until that is known
    ImageContentsModel m_contents;
    std::unique_ptr<ImageView> m_view; ///< made when it is first asked for
    std::unique_ptr<InspectJob> m_inspecting; ///< null when nothing is looked at
    std::unique_ptr<TracksJob> m_finding;
    FileLending m_lending;
    QList<ImagePlace> m_lentPlaces; ///< of the image that is open; empty while none of its files are lent
};

} // namespace Tessaron::Desktop
