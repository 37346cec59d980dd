#include <TessaronClasses/TransferRate.h>

#include <cmath>

namespace Tessaron
{

namespace
{

constexpr std::chrono::seconds window(5);
constexpr std::chrono::milliseconds leastTime(250);

} // namespace

void TransferRate::add(Time now, std::uint64_t bytesDone)
{
    m_samples.push_back({now, bytesDone});
    while (m_samples.size() > 2 && now - m_samples[1].time >= window)
        m_samples.pop_front();
}

std::optional<double> TransferRate::bytesPerSecond() const
{
    if (m_samples.size() < 2)
        return {};
    const std::chrono::duration<double> time = m_samples.back().time - m_samples.front().time;
    if (time < leastTime)
        return {};
    return double(m_samples.back().bytes - m_samples.front().bytes) / time.count();
}

std::optional<std::chrono::seconds> TransferRate::remaining(std::uint64_t bytesTotal) const
{
    const std::optional<double> rate = bytesPerSecond();
    if (!rate || *rate < 1 || m_samples.back().bytes > bytesTotal)
        return {};
    return std::chrono::seconds(std::llround(std::ceil(double(bytesTotal - m_samples.back().bytes) / *rate)));
}

} // namespace Tessaron
