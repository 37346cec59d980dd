#pragma once

#include <QWidget>

#include <cstdint>

class QComboBox;
class QLabel;

namespace Tessaron::Desktop
{

class CapacityMeter;

/// How full the disc is: a bar, a text, and the kind of disc to choose.
class CapacityBar final : public QWidget
{
    Q_OBJECT

public:
    explicit CapacityBar(QWidget *parent = nullptr);

    void setUsed(std::uint64_t bytes, bool isExact);
    [[nodiscard]] QString mediumKey() const;
    void setMediumKey(const QString &key);
    /// What is said beside the bar.
    [[nodiscard]] QString text() const;
    [[nodiscard]] bool isTooMuch() const;

Q_SIGNALS:
    void mediumChanged(const QString &key);

private:
    void showUse();

    std::uint64_t m_used = 0;
    bool m_isExact = false;
    CapacityMeter *const m_meter;
    QLabel *const m_label;
    QComboBox *const m_medium;
};

} // namespace Tessaron::Desktop
