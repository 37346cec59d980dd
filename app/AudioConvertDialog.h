#pragma once

#include <QByteArray>
#include <QDialog>

#include <cstdint>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace Tessaron::Desktop
{

/// Asks to what the files of tracks are to be converted, and where the results go.
class AudioConvertDialog final : public QDialog
{
    Q_OBJECT

public:
    /// What the user wants.
    struct Choice {
        std::int32_t format = 0; ///< a code of KRAudioConverter
        bool carriesTags = true; ///< titles and covers, where the format has a place for them
        QByteArray folder;
    };

    /// Begins with `choice`; `files` is how many there are.
    AudioConvertDialog(const Choice &choice, qsizetype files, QWidget *parent = nullptr);

    [[nodiscard]] Choice choice() const;
    /// Of the formats only MP3 has a place for titles and covers.
    [[nodiscard]] static bool hasTags(std::int32_t format);

private:
    void layOut(qsizetype files);
    void askForFolder();
    void update();

    QComboBox *const m_format;
    QCheckBox *const m_tags;
    QLineEdit *const m_folder;
    QLabel *const m_hint;
    QPushButton *m_convert = nullptr;
};

} // namespace Tessaron::Desktop
