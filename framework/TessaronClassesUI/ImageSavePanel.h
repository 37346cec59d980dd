#pragma once

#include "platform/foundation/Export.h"

#include <QFileDialog>
#include <QStringList>

#include <memory>
#include <optional>

class QCheckBox;
class QComboBox;

namespace Tessaron
{

/// The save panel in which the user picks an image file and its format: a file dialog with a pop-up of the formats
/// below it. Show it with exec() or open(). On the main thread.
class TESSARON_EXPORT ImageSavePanel final : public QFileDialog
{
public:
    /// A panel with a pop-up item for each name. The extension at the same position belongs to it; "????" stands for no
    /// extension, and so does a missing entry or list. The first format is chosen at the start, whatever the integer
    /// holds; its index, and later that of each format chosen, is written to `*selectedFormatIndex`, which has to
    /// outlive the panel. Null when the names or the address are missing.
    [[nodiscard]] static std::unique_ptr<ImageSavePanel>
    savePanelWithExtensions(const std::optional<QStringList> &extensions,
                            const std::optional<QStringList> &localizedNames, int *selectedFormatIndex,
                            QWidget *parent = nullptr);

    /// Chooses the item of the pop-up with this index, as its action does: writes the index to the caller's integer
    /// and, unless the item has no extension, makes that the required file type. Ignored for an index without an item.
    void formatPopUpAction(int item);

    /// The extension that the saved file will have; empty while every type is left as it was typed.
    [[nodiscard]] QString requiredFileType() const { return defaultSuffix(); }
    /// True when the user may ask for the extension to be hidden: when extensions were given.
    [[nodiscard]] bool canSelectHiddenExtension() const;
    /// True when the user did. The panel itself does not act on it.
    [[nodiscard]] bool isExtensionHidden() const;

    /// Appends the required file type to a typed name that has another one, then goes on as every file dialog.
    void accept() override;

private:
    ImageSavePanel(const std::optional<QStringList> &extensions, const QStringList &localizedNames,
                   int *selectedFormatIndex, QWidget *parent);

    void addFormats(const QStringList &localizedNames, const QStringList &extensions);
    void addAccessoryView();
    void setRequiredFileType(const QString &extension);

    int *const m_selectedFormatIndex;
    QComboBox *const m_popUp; ///< owned by the dialog, like all its widgets
    QCheckBox *const m_hideExtension; ///< null when there are no extensions
};

} // namespace Tessaron
