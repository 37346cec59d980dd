#pragma once

#include <TessaronClasses/KRMovieInfo.h>

#include <QString>
#include <QVariantMap>

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace Tessaron
{

/// A request for information on a file.
struct MovieRequest {
    QString path; ///< null in a request that asks for nothing
    std::vector<KRMovieInfo::Receiver> receivers;
    bool wantsArtworks = true;
    bool hasReceivers = true; ///< false: not even an empty list of them

    /// Under the keys "path" and "del".
    [[nodiscard]] QVariantMap dictionary() const;
};

/// The requests that wait, and the one that is being read. Not thread-safe: its owner has the lock.
class MovieRequestQueue
{
public:
    [[nodiscard]] bool isEmpty() const { return m_requests.empty(); }
    [[nodiscard]] std::size_t size() const { return m_requests.size(); }
    [[nodiscard]] const MovieRequest &operator[](std::size_t index) const { return m_requests[index]; }

    void append(MovieRequest request) { m_requests.push_back(std::move(request)); }
    void removeFirst() { m_requests.pop_front(); }
    void clear() { m_requests.clear(); }
    /// Takes a request out.
    [[nodiscard]] MovieRequest take(std::size_t index);

    /// -1 without such a request.
    [[nodiscard]] std::ptrdiff_t indexOfItemWithPath(const QString &path) const;

    /// As KRMovieInfo::abortInfoRequestForReceiver().
    void withdraw(const KRMovieInfoReceiver *receiver);

private:
    std::deque<MovieRequest> m_requests; ///< oldest first
};

} // namespace Tessaron
