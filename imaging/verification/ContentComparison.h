#pragma once

#include "imaging/verification/ContentPlan.h"
#include "imaging/verification/SourceIndex.h"
#include "platform/discimage/source/DiscImageSource.h"
#include <TessaronClasses/ImageDifferences.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tessaron
{

/// Compares the contents of all files with their sources, in the order of the image, each place once. Memory does not
/// grow with the files.
class ContentComparison
{
public:
    ContentComparison(const DiscImageSource &image, const SourceIndex &sources, ContentPlan &plan,
                      ImageDifferenceList &differences);

    /// Bytes that are to be compared.
    [[nodiscard]] std::uint64_t byteCount() const { return m_byteCount; }
    /// `progress` is told the bytes that are done and answers false to end it.
    void run(const std::function<bool(std::uint64_t)> &progress);

private:
    void compare(const ContentPlace &place);
    [[nodiscard]] bool compareRun(const ContentPlace &place, int file, const VolumeExtent &run, std::uint64_t position);
    [[nodiscard]] bool isSameAsBefore(std::size_t index) const;
    /// The image's bytes; null when they cannot be read (which is noted).
    [[nodiscard]] const char *imageBytes(const ContentPlace &place, std::uint64_t offset, std::size_t length);
    void reportMismatch(const ContentPlace &place, const char *fromSource, const char *fromImage, std::size_t length,
                        std::uint64_t position, std::uint64_t offset);

    const DiscImageSource &m_image;
    const SourceIndex &m_sources;
    ContentPlan &m_plan;
    ImageDifferenceList &m_differences;
    const std::vector<ContentPlace> &m_places;
    std::uint64_t m_byteCount = 0;
    std::uint64_t m_done = 0;
    bool m_isCancelled = false;
    const std::function<bool(std::uint64_t)> *m_progress = nullptr;
    std::vector<char> m_window; ///< of the image
    std::uint64_t m_windowStart = 0;
    std::size_t m_windowLength = 0;
    std::vector<char> m_buffer; ///< of the source
};

} // namespace Tessaron
