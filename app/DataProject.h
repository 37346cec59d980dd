#pragma once

#include "app/DiscDocument.h"
#include "app/ProjectSubject.h"

#include <QString>

namespace Tessaron::Desktop
{

/// A data disc as a project: its tree, its name, and the kind of disc that it is meant for. On the main thread.
class DataProject final : public ProjectSubject
{
public:
    explicit DataProject(DiscDocument &document)
        : m_document(document)
    {
    }

    [[nodiscard]] QString mediumKey() const { return m_mediumKey; }
    void setMediumKey(const QString &key) { m_mediumKey = key; }

    // ProjectSubject
    [[nodiscard]] QString kind() const override { return QStringLiteral("data"); }
    [[nodiscard]] QUndoStack &undoStack() override { return m_document.undoStack(); }
    [[nodiscard]] bool isEmpty() const override { return m_document.model().root().children.empty(); }
    [[nodiscard]] Writer writer() const override;
    [[nodiscard]] Reader reader() override;
    void clear() override;

private:
    DiscDocument &m_document;
    QString m_mediumKey = QStringLiteral("dvd");
};

} // namespace Tessaron::Desktop
