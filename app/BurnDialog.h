#pragma once

#include "app/DesktopPanel.h"

#include <TessaronClasses/BlankDiscJob.h>
#include <TessaronClasses/DrivesJob.h>

#include <QDialog>

#include <memory>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace Tessaron::Desktop
{

class JobBar;

/// Asks which drive is to write, and how, and says what is in it. A drive is opened only when it is chosen here: the
/// first one, as soon as the drives are known. Of a disc with sessions it is found out what of them stays before
/// anything can be added to it. Discs that can be erased are erased here.
class BurnDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit BurnDialog(const BurnSubject &subject, QWidget *parent = nullptr);
    ~BurnDialog() override;

    /// Lists the computer's drives and looks into the first one.
    void lookForDrives();
    /// Shows these, and looks into the first one.
    void showDrives(const std::vector<DriveFacts> &drives);

    /// The drive, and how it is to write; nothing of what is to be written.
    [[nodiscard]] BurnDiscOrder settings() const;
    /// The disc that was found in the drive.
    [[nodiscard]] const std::optional<DiscDescription> &disc() const { return m_disc; }
    /// What is said of the disc, and what is in the way.
    [[nodiscard]] QString text() const;
    [[nodiscard]] QPushButton &burnButton() const { return *m_burn; }
    [[nodiscard]] QPushButton &eraseButton() const { return *m_erase; }
    [[nodiscard]] QCheckBox &openBox() const { return *m_open; }
    [[nodiscard]] bool isBusy() const { return m_look || m_plan || m_blanking; }

    /// Erases the disc, once the user does not mind.
    void eraseDisc();
    /// Not while a disc is being erased, which cannot be stopped.
    void reject() override;

private:
    void layOut();
    void look();
    void forgetDisc();
    void looked(const DriveFacts &facts);
    void chooseAddition();
    void planAddition();
    void planned(const BurnDiscResult &result);
    void showSpeeds();
    void startErasing();
    void erased(const BlankDiscResult &result);
    void updateButtons();
    void updateOpenBox();
    [[nodiscard]] QStringList stateLines() const;
    [[nodiscard]] QString obstacle() const;
    [[nodiscard]] bool addsToDisc() const;
    [[nodiscard]] bool isWrongKind() const;
    [[nodiscard]] bool mayWrite() const;
    [[nodiscard]] QByteArray drive() const;

    const BurnSubject m_subject;
    QComboBox *const m_drives;
    QPushButton *const m_again;
    QLabel *const m_state;
    QComboBox *const m_speeds;
    QCheckBox *const m_verify;
    QCheckBox *const m_open;
    QCheckBox *const m_simulate;
    QCheckBox *const m_eject;
    JobBar *const m_progress;
    QPushButton *m_burn = nullptr;
    QPushButton *m_erase = nullptr;
    std::optional<DiscDescription> m_disc;
    QString m_fault; ///< why the drive cannot be used, or how erasing failed
    std::optional<BurnDiscResult> m_addition; ///< what would come of adding to the disc, once that is known
    std::unique_ptr<DrivesJob> m_look; ///< null when nothing is asked
    std::unique_ptr<BurnDiscJob> m_plan; ///< finds out what would come of adding
    std::unique_ptr<BlankDiscJob> m_blanking;
};

} // namespace Tessaron::Desktop
