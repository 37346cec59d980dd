#pragma once

#include <TessaronClasses/KRFileReference.h>

#include <QByteArrayView>

#include <array>
#include <cstdint>
#include <memory>

namespace Tessaron
{

/// What a file reference holds while something is cached: texts that either belong to it or to storage that lives as
/// long as the process (names in the table of places, kinds of files), so that looking at a million files copies none
/// of their names.
struct KRFileReference::Cache {
    enum Text : std::uint8_t { Extension, DisplayName, Name, DisplayKind, TextCount };

    struct Icon {
        MallocBuffer data;
        std::int32_t length = 0;
    };
    struct Icons {
        Icon small;
        Icon large;
    };

    Cache() = default;
    Cache(const Cache &) = delete;
    Cache &operator=(const Cache &) = delete;
    ~Cache();

    /// Takes over the buffer, which may be null.
    void own(Text text, MallocBuffer buffer);
    /// Refers to bytes that live as long as the process and are followed by a NUL; empty ones mean that there is no
    /// text.
    void refer(Text text, QByteArrayView bytes);
    void clear(Text text);
    [[nodiscard]] const char *text(Text text) const { return texts[text]; }

    [[nodiscard]] bool hasPath() const { return path || pathNode != 0; }
    [[nodiscard]] bool hasLargeIcon() const { return icons && icons->large.data; }

    std::array<const char *, TextCount> texts = {};
    MallocBuffer path; ///< as the maker of the reference gave it
    std::uint32_t pathNode = 0; ///< or the place whose path it is
    std::uint32_t filledAt = 0; ///< when the system was last asked for texts, in ticks(); 0 for never
    std::uint8_t owned = 0; ///< a bit for each text that is freed
    std::unique_ptr<Icons> icons;

    /// The time in sixteenths of a second, never 0; good for eight years of running.
    [[nodiscard]] static std::uint32_t ticks();
    static constexpr std::uint32_t ticksPerSecond = 16;
};

/// The names that come from the user, not from the system.
struct KRFileReference::GivenNames {
    QString desiredName;
    QString virtualFolderName;
};

} // namespace Tessaron
