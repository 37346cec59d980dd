#pragma once

#include "imaging/verification/SourceIndex.h"
#include "platform/discimage/volume/VolumeReader.h"

#include <cstdint>
#include <stop_token>

namespace Tessaron
{

/// Numbers that are equal for an object of a volume and the source that it was made of, and hardly ever for others: of
/// files made from how they begin, of folders from all that is in them. They tell apart objects whose names differ in a
/// number alone. Making one reads files, so they are for the few objects that need them.
class Fingerprints
{
public:
    Fingerprints(const VolumeReader &reader, const SourceIndex &sources, const std::stop_token &stop);

    [[nodiscard]] std::uint64_t ofObject(const VolumeObject &object);
    [[nodiscard]] std::uint64_t ofSource(SourceNumber source);

private:
    [[nodiscard]] std::uint64_t ofFile(const VolumeObject &file);
    [[nodiscard]] std::uint64_t ofSourceFile(SourceNumber file) const;
    [[nodiscard]] std::uint64_t ofFolder(const VolumeObject &folder, int depth);
    [[nodiscard]] std::uint64_t ofSourceFolder(SourceNumber folder, int depth) const;

    const VolumeReader &m_reader;
    const SourceIndex &m_sources;
    const std::stop_token m_stop;
    std::uint64_t m_objectsLeft; ///< of the volume that may still be listed
};

} // namespace Tessaron
