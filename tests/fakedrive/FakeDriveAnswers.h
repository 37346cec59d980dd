#pragma once

#include "tests/fakedrive/FakeDisc.h"
#include "tests/fakedrive/ScsiBytes.h"

namespace Tessaron::Testing
{

/// What the fake drive says of itself and of its disc, as replies of MMC-5.
class FakeDriveAnswers
{
public:
    /// Both must outlive it.
    FakeDriveAnswers(const FakeDisc &disc, const Bytes &writeParameters)
        : m_disc(disc)
        , m_writeParameters(writeParameters)
    {
    }

    [[nodiscard]] Bytes inquiry() const;
    [[nodiscard]] Bytes configuration() const;
    [[nodiscard]] Bytes discInformation() const;
    [[nodiscard]] Bytes trackInformation(int track) const;
    [[nodiscard]] Bytes tableOfContents(int format) const;
    [[nodiscard]] Bytes modePage(int page) const;
    [[nodiscard]] Bytes formatCapacities() const;
    [[nodiscard]] Bytes performance(int type) const;
    [[nodiscard]] Bytes readCapacity() const;

private:
    [[nodiscard]] bool hasDisc() const { return m_disc.profile != FakeProfile::None; }

    const FakeDisc &m_disc;
    const Bytes &m_writeParameters; ///< mode page 05 as it was set
};

} // namespace Tessaron::Testing
