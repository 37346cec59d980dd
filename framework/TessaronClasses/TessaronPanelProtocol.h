#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <memory>

class QAbstractButton;
class QAction;
class QWidget;

namespace Tessaron
{

class NSError;
class TessaronLayoutCreationManager;
/// The operations that a panel calls on its host; the application defines them.
class TessaronPanelDelegate;

// The values behind these are the application's own; 0 stands for none.
using TessaronButtonTypes = std::uint32_t; ///< a set of buttons, one bit each
using TessaronActionMenuTypes = std::uint32_t; ///< a set of entries of the action menu, one bit each
using TessaronAccessoryViewType = std::int32_t; ///< where an accessory view is to be shown
using TessaronMediaType = std::int32_t; ///< a kind of disc

/// What a content panel (one for each kind of disc that an application makes) answers to its host. TessaronPanel
/// implements it with neutral defaults and says what each operation is for. On the main thread.
class TESSARON_EXPORT TessaronPanelProtocol
{
public:
    virtual ~TessaronPanelProtocol();

    [[nodiscard]] virtual QList<QByteArray> arrayOfCDTextBlocks() = 0;
    [[nodiscard]] virtual bool acceptsMediaOfType(TessaronMediaType type) = 0;
    [[nodiscard]] virtual QWidget *accessoryViewForType(TessaronAccessoryViewType type) = 0;
    [[nodiscard]] virtual QString emptyDiscInformationMessage() = 0;
    virtual void getInfo() = 0;
    [[nodiscard]] virtual bool enableInfoButton() = 0;
    [[nodiscard]] virtual bool enableBurnButton() = 0;
    [[nodiscard]] virtual QString customSizeText() = 0;
    [[nodiscard]] virtual std::uint64_t bestSizeApproximation() = 0;
    [[nodiscard]] virtual DRLayout createLayoutSync(NSError *error) = 0;
    virtual bool cancelLayoutCreationAsync() = 0;
    [[nodiscard]] virtual bool
    createLayoutAsyncAndNotifyLayoutCreationManager(const std::weak_ptr<TessaronLayoutCreationManager> &manager) = 0;
    [[nodiscard]] virtual bool canCreateLayoutAsync() = 0;
    [[nodiscard]] virtual TessaronDiscImageFormat handledDiscImageFormats() = 0;
    [[nodiscard]] virtual bool actionMenuItemIsEnabled(QAction *menuItem) = 0;
    virtual void performActionMenuItemAction(QAction *menuItem) = 0;
    [[nodiscard]] virtual QList<QAction *> customActionMenuItems() = 0;
    [[nodiscard]] virtual TessaronActionMenuTypes actionMenuTypes() = 0;
    virtual void performButtonAction(QAbstractButton *button) = 0;
    virtual void setDelegate(const std::shared_ptr<TessaronPanelDelegate> &delegate) = 0;
    [[nodiscard]] virtual TessaronButtonTypes buttonTypes() = 0;
    [[nodiscard]] virtual QWidget *view() = 0;
    virtual void panelDidUnload() = 0;
    [[nodiscard]] virtual bool panelShouldUnload() = 0;
    virtual void panelDidLoad() = 0;
    [[nodiscard]] virtual bool panelWillLoad() = 0;
};

} // namespace Tessaron
