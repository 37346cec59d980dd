#include "media/MovieRequestQueue.h"

#include <algorithm>
#include <stdexcept>

namespace Tessaron
{

QVariantMap MovieRequest::dictionary() const
{
    QVariantMap dictionary;
    if (!path.isNull())
        dictionary.insert(QStringLiteral("path"), path);
    if (!hasReceivers)
        return dictionary;
    QVariantList list;
    for (const KRMovieInfo::Receiver &receiver : receivers)
        list << QVariant::fromValue(receiver);
    dictionary.insert(QStringLiteral("del"), list);
    return dictionary;
}

MovieRequest MovieRequestQueue::take(std::size_t index)
{
    MovieRequest request = std::move(m_requests[index]);
    m_requests.erase(m_requests.begin() + std::ptrdiff_t(index));
    return request;
}

std::ptrdiff_t MovieRequestQueue::indexOfItemWithPath(const QString &path) const
{
    const auto found = std::find_if(m_requests.begin(), m_requests.end(),
                                    [&](const MovieRequest &request) { return request.path == path; });
    return found == m_requests.end() ? -1 : found - m_requests.begin();
}

void MovieRequestQueue::withdraw(const KRMovieInfoReceiver *receiver)
{
    for (std::size_t index = 0; index < m_requests.size(); ++index) {
        const MovieRequest &request = m_requests[index];
        const auto held = std::find_if(request.receivers.begin(), request.receivers.end(),
                                       [&](const KRMovieInfo::Receiver &one) { return one.lock().get() == receiver; });
        if (request.hasReceivers && held == request.receivers.end())
            continue;
        const bool hasFurther = index + 1 < m_requests.size();
        if (!request.hasReceivers || request.receivers.size() == 1) {
            m_requests.erase(m_requests.begin() + std::ptrdiff_t(index));
        } else {
            MovieRequest shortened = request;
            const auto place = std::size_t(held - request.receivers.begin());
            shortened.receivers.erase(shortened.receivers.begin() + std::ptrdiff_t(place));
            // It goes to the place that the receiver had in its list, not to its own one.
            m_requests.at(place) = std::move(shortened);
        }
        if (hasFurther)
            throw std::logic_error("the requests for movie information were changed during a walk");
        return;
    }
}

} // namespace Tessaron
