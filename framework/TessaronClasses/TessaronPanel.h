#pragma once

#include <TessaronClasses/TessaronPanelProtocol.h>

class QImage;

namespace Tessaron
{

/// Base of the content panels. It answers everything with a neutral default; a panel overrides what it supports.
/// Widgets are named but never used here: a panel without a window, for a script or a server, needs none.
///
/// Owned by the host through std::shared_ptr; used on the main thread.
class TESSARON_EXPORT TessaronPanel : public TessaronPanelProtocol
{
public:
    TessaronPanel();
    ~TessaronPanel() override;
    TessaronPanel(const TessaronPanel &) = delete;
    TessaronPanel &operator=(const TessaronPanel &) = delete;

    // Loading and unloading, called by the host.

    /// False keeps the panel from being loaded. Default: true.
    [[nodiscard]] bool panelWillLoad() override;
    void panelDidLoad() override;
    /// False keeps the panel where it is. Default: true.
    [[nodiscard]] bool panelShouldUnload() override;
    void panelDidUnload() override;

    // Presentation.

    /// What the host shows; owned by the panel. Default: null.
    [[nodiscard]] QWidget *view() override;
    /// Default: none.
    [[nodiscard]] TessaronButtonTypes buttonTypes() override;
    void performButtonAction(QAbstractButton *button) override;
    /// Default: none.
    [[nodiscard]] TessaronActionMenuTypes actionMenuTypes() override;
    /// Further entries of the action menu, owned by the panel. Default: none.
    [[nodiscard]] QList<QAction *> customActionMenuItems() override;
    void performActionMenuItemAction(QAction *menuItem) override;
    /// Default: false.
    [[nodiscard]] bool actionMenuItemIsEnabled(QAction *menuItem) override;
    /// A view for another place of the host's window; owned by the panel. Default: null.
    [[nodiscard]] QWidget *accessoryViewForType(TessaronAccessoryViewType type) override;
    /// The message for a user who is about to burn an empty disc. Default: null.
    [[nodiscard]] QString emptyDiscInformationMessage() override;
    /// Default: false.
    [[nodiscard]] bool enableInfoButton() override;
    /// Shows information about the selection. Default: nothing.
    void getInfo() override;
    /// True when customSizeText() is to be shown instead of the host's own text. Default: false.
    [[nodiscard]] virtual bool hasCustomSizeTextFormat();
    /// Default: null.
    [[nodiscard]] QString customSizeText() override;

    /// The picture and the name of this kind of panel, for a list of kinds. A panel class hides them with its own.
    /// Default: null.
    [[nodiscard]] static QImage icon();
    [[nodiscard]] static QString localizedName();

    /// The host. It is not owned: once it is gone, delegate() is null.
    void setDelegate(const std::shared_ptr<TessaronPanelDelegate> &delegate) override;
    [[nodiscard]] std::shared_ptr<TessaronPanelDelegate> delegate() const { return m_delegate.lock(); }

    // The disc.

    /// Default: true.
    [[nodiscard]] bool acceptsMediaOfType(TessaronMediaType type) override;
    /// Bytes that the disc will take, as far as is known. Default: 0.
    [[nodiscard]] std::uint64_t bestSizeApproximation() override;
    /// Default: true exactly when bestSizeApproximation() is not 0.
    [[nodiscard]] bool enableBurnButton() override;
    /// The image formats that the panel can produce, one bit each. Default: none.
    [[nodiscard]] TessaronDiscImageFormat handledDiscImageFormats() override;
    /// CD-TEXT for the disc. Default: none.
    [[nodiscard]] QList<QByteArray> arrayOfCDTextBlocks() override;

    /// True when the panel makes its layout in the background: then the next operation is used, else
    /// createLayoutSync(). Default: false.
    [[nodiscard]] bool canCreateLayoutAsync() override;
    /// Starts; true when it has started, and then the manager hears of the end. Default: false.
    [[nodiscard]] bool createLayoutAsyncAndNotifyLayoutCreationManager(
        const std::weak_ptr<TessaronLayoutCreationManager> &manager) override;
    /// Asks a running creation to stop; true when there was one. The manager hears of the cancel. Default: false.
    bool cancelLayoutCreationAsync() override;
    /// Makes the layout now. A null layout comes with a reason in `*error`. Default: a null layout.
    [[nodiscard]] DRLayout createLayoutSync(NSError *error) override;

private:
    std::weak_ptr<TessaronPanelDelegate> m_delegate;
};

} // namespace Tessaron
