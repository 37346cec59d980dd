#pragma once

#include "app/AudioDisc.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace Tessaron::Desktop
{

/// The editor of CD-TEXT: a row for the disc and one for each track, a column for each kind of text, the ISRCs, and the
/// disc's catalogue number.
class AudioTextDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit AudioTextDialog(const AudioDisc &disc, QWidget *parent = nullptr);

    /// Puts what was typed into a disc with the same tracks.
    void putInto(AudioDisc &disc) const;
    /// Brings a track's row into view; the disc's own for -1.
    void goTo(int track);
    [[nodiscard]] QTableWidget &table() const { return *m_table; }
    [[nodiscard]] QLineEdit &catalogNumber() const { return *m_number; }
    /// Why this cannot be on a disc; empty when it can.
    [[nodiscard]] QString problem() const;

private:
    void fill(const AudioDisc &disc);
    void showProblem();
    [[nodiscard]] QString textAt(int row, int column) const;

    QTableWidget *const m_table;
    QLineEdit *const m_number;
    QLabel *const m_problem;
    QPushButton *m_accept = nullptr;
};

} // namespace Tessaron::Desktop
