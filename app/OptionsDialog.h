#pragma once

#include <TessaronClasses/ZelFileAttribute.h>

#include <QDialog>

#include <array>

class QCheckBox;
class QRadioButton;

namespace Tessaron::Desktop
{

/// Asks how objects are to appear on the disc: hidden, and in which filesystems.
class OptionsDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `what` names the objects.
    OptionsDialog(const QString &what, const _TessaronAttributes &options, QWidget *parent = nullptr);

    [[nodiscard]] _TessaronAttributes options() const;

private:
    static constexpr int filesystemCount = 4;

    QCheckBox *m_isHidden;
    QRadioButton *m_all;
    QRadioButton *m_macs;
    QRadioButton *m_pcs;
    QRadioButton *m_chosen;
    std::array<QCheckBox *, filesystemCount> m_filesystems{};
};

} // namespace Tessaron::Desktop
