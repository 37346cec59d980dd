#pragma once

#include "app/AudioDisc.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QHBoxLayout;
class QTableWidget;

namespace Tessaron::Desktop
{

/// The editor of CD-TEXT: for each language a row for the disc and one for each track, with a column for each kind of
/// text; and the ISRCs and the disc's catalogue number, which are those of all languages.
class AudioTextDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit AudioTextDialog(const AudioDisc &disc, QWidget *parent = nullptr);

    /// Puts what was typed into the disc, whose tracks may have been joined by others meanwhile.
    void putInto(AudioDisc &disc);
    /// Brings a track's row into view; the disc's own for -1.
    void goTo(int track);
    [[nodiscard]] QTableWidget &table() const { return *m_table; }
    /// The language whose texts are shown, of those that the disc has.
    [[nodiscard]] QComboBox &languages() const { return *m_languages; }
    [[nodiscard]] QMenu &addableLanguages() const { return *m_addable; }
    [[nodiscard]] QPushButton &removeLanguageButton() const { return *m_removeLanguage; }
    void showLanguage(std::uint8_t language);
    /// Adds an empty language to those of the disc and shows it. One without any text is not kept.
    void addLanguage(std::uint8_t language);
    /// Takes the texts of the language that is shown away; that of the last one only empties it.
    void removeLanguage();
    [[nodiscard]] QLineEdit &catalogNumber() const { return *m_number; }
    /// Why this cannot be on a disc; empty when it can.
    [[nodiscard]] QString problem() const;

private:
    [[nodiscard]] QHBoxLayout *languageRow();
    void layOutTable();
    void fillTexts();
    /// What the table shows, into the disc of the dialog.
    void keepTexts();
    void fillLanguages();
    void showProblem();
    [[nodiscard]] QString textAt(int row, int column) const;

    AudioDisc m_disc; ///< as it is edited; of the language that is shown, as of the last change to another
    std::uint8_t m_language = CDTextBlock::english; ///< that is shown
    QComboBox *const m_languages;
    QMenu *const m_addable;
    QPushButton *const m_addLanguage;
    QPushButton *const m_removeLanguage;
    QTableWidget *const m_table;
    QLineEdit *const m_number;
    QLabel *const m_problem;
    QPushButton *m_accept = nullptr;
};

} // namespace Tessaron::Desktop
