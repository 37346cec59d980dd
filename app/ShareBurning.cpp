#include "app/ShareBurning.h"

#include "app/ShareFolder.h"
#include "app/Words.h"

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

ShareBurning::ShareBurning(std::vector<DiscShare> discs, QStringList missing, std::weak_ptr<TessaronPanelDelegate> host,
                           QObject *parent)
    : QObject(parent)
    , m_discs(std::move(discs))
    , m_missing(std::move(missing))
    , m_host(std::move(host))
{
}

void ShareBurning::askForNext()
{
    const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock();
    if (!host || m_written == m_discs.size()) {
        tell();
        return;
    }
    const DiscShare &disc = m_discs[m_written];
    BurnSubject subject;
    subject.order.tree = disc.tree;
    subject.order.volumeName = disc.volumeName;
    subject.bytes = disc.bytes;
    subject.name = tr("Disc %1 of %2: %3").arg(m_written + 1).arg(m_discs.size()).arg(displayableText(disc.volumeName));
    host->burnPanelDisc(subject, subject.name,
                        [self = QPointer<ShareBurning>(this)](BurnEnd end, const JobOutcome &outcome) {
                            if (self)
                                self->take(end, outcome);
                        });
}

void ShareBurning::take(BurnEnd end, const JobOutcome &outcome)
{
    if (!outcome.summary.isEmpty())
        m_told << displayableText(m_discs[m_written].volumeName) + QStringLiteral(": ") + outcome.summary;
    m_told << outcome.details;
    if (end == BurnEnd::Declined) {
        tell();
        return;
    }
    if (end == BurnEnd::Written)
        ++m_written;
    askForNext();
}

void ShareBurning::tell()
{
    deleteLater();
    const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock();
    if (!host)
        return;
    QString text = tr("%1 of %n disc(s) were written.", nullptr, int(m_discs.size())).arg(m_written);
    QStringList details = m_told;
    for (std::size_t index = m_written; index < m_discs.size(); ++index)
        details << tr("%1 is not written.").arg(displayableText(m_discs[index].volumeName));
    if (!m_missing.isEmpty())
        text += u' ' + missingFromAllDiscs(m_missing.size());
    host->panelTells(text, details + m_missing);
}

} // namespace Tessaron::Desktop
