#pragma once

#include "app/DiscDocument.h"
#include "app/ProjectSubject.h"

#include <TessaronClasses/DiscSplitJob.h>

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
    [[nodiscard]] static QString kindOfAll() { return QStringLiteral("data"); }
    [[nodiscard]] QString kind() const override { return kindOfAll(); }
    [[nodiscard]] QUndoStack &undoStack() override { return m_document.undoStack(); }
    [[nodiscard]] bool isEmpty() const override { return m_document.model().root().children.empty(); }
    [[nodiscard]] Writer writer() const override;
    [[nodiscard]] Reader reader() override;
    void clear() override;

private:
    DiscDocument &m_document;
    QString m_mediumKey = QStringLiteral("dvd");
};

/// The project of one of the discs that a disc was split into; see ProjectSubject::writer().
[[nodiscard]] ProjectSubject::Writer writerOfShare(const DiscShare &share, const QString &mediumKey);

} // namespace Tessaron::Desktop
