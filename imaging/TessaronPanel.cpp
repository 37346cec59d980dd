#include "platform/foundation/NSError.h"
#include <TessaronClasses/TessaronLayoutCreationManager.h>
#include <TessaronClasses/TessaronPanel.h>

#include <QImage>

namespace Tessaron
{

TessaronPanelProtocol::~TessaronPanelProtocol() = default;

TessaronLayoutCreationManager::~TessaronLayoutCreationManager() = default;

TessaronPanel::TessaronPanel() = default;

TessaronPanel::~TessaronPanel() = default;

bool TessaronPanel::panelWillLoad()
{
    return true;
}

void TessaronPanel::panelDidLoad() { }

bool TessaronPanel::panelShouldUnload()
{
    return true;
}

void TessaronPanel::panelDidUnload() { }

QWidget *TessaronPanel::view()
{
    return nullptr;
}

TessaronButtonTypes TessaronPanel::buttonTypes()
{
    return 0;
}

void TessaronPanel::performButtonAction(QAbstractButton *) { }

TessaronActionMenuTypes TessaronPanel::actionMenuTypes()
{
    return 0;
}

QList<QAction *> TessaronPanel::customActionMenuItems()
{
    return {};
}

void TessaronPanel::performActionMenuItemAction(QAction *) { }

bool TessaronPanel::actionMenuItemIsEnabled(QAction *)
{
    return false;
}

QWidget *TessaronPanel::accessoryViewForType(TessaronAccessoryViewType)
{
    return nullptr;
}

QString TessaronPanel::emptyDiscInformationMessage()
{
    return {};
}

bool TessaronPanel::enableInfoButton()
{
    return false;
}

void TessaronPanel::getInfo() { }

bool TessaronPanel::hasCustomSizeTextFormat()
{
    return false;
}

QString TessaronPanel::customSizeText()
{
    return {};
}

QImage TessaronPanel::icon()
{
    return {};
}

QString TessaronPanel::localizedName()
{
    return {};
}

void TessaronPanel::setDelegate(const std::shared_ptr<TessaronPanelDelegate> &delegate)
{
    m_delegate = delegate;
}

bool TessaronPanel::acceptsMediaOfType(TessaronMediaType)
{
    return true;
}

std::uint64_t TessaronPanel::bestSizeApproximation()
{
    return 0;
}

bool TessaronPanel::enableBurnButton()
{
    // The whole number: an estimate that is a multiple of 2^32 must not look like 0.
    return bestSizeApproximation() != 0;
}

TessaronDiscImageFormat TessaronPanel::handledDiscImageFormats()
{
    return 0;
}

QList<QByteArray> TessaronPanel::arrayOfCDTextBlocks()
{
    return {};
}

bool TessaronPanel::canCreateLayoutAsync()
{
    return false;
}

bool TessaronPanel::createLayoutAsyncAndNotifyLayoutCreationManager(
    const std::weak_ptr<TessaronLayoutCreationManager> &)
{
    return false;
}

bool TessaronPanel::cancelLayoutCreationAsync()
{
    return false;
}

DRLayout TessaronPanel::createLayoutSync(NSError *)
{
    return {};
}

} // namespace Tessaron
