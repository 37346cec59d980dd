#include "platform/disctracks/CDTextLanguages.h"

#include <QLatin1StringView>

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

struct Language {
    std::uint8_t number;
    const char *code;
    const char *otherCode = nullptr;
};

constexpr std::array languages = {
    Language{0x01, "alb", "sqi"}, Language{0x02, "bre"},        Language{0x03, "cat"},
    Language{0x04, "hrv", "scr"}, Language{0x05, "wel", "cym"}, Language{0x06, "cze", "ces"},
    Language{0x07, "dan"},        Language{0x08, "ger", "deu"}, Language{0x09, "eng"},
    Language{0x0A, "spa"},        Language{0x0B, "epo"},        Language{0x0C, "est"},
    Language{0x0D, "baq", "eus"}, Language{0x0E, "fao"},        Language{0x0F, "fre", "fra"},
    Language{0x10, "fry"},        Language{0x11, "gle"},        Language{0x12, "gla"},
    Language{0x13, "glg"},        Language{0x14, "ice", "isl"}, Language{0x15, "ita"},
    Language{0x16, "sme"},        Language{0x17, "lat"},        Language{0x18, "lav"},
    Language{0x19, "ltz"},        Language{0x1A, "lit"},        Language{0x1B, "hun"},
    Language{0x1C, "mlt"},        Language{0x1D, "dut", "nld"}, Language{0x1E, "nor", "nob"},
    Language{0x1F, "oci"},        Language{0x20, "pol"},        Language{0x21, "por"},
    Language{0x22, "rum", "ron"}, Language{0x23, "roh"},        Language{0x24, "srp", "scc"},
    Language{0x25, "slo", "slk"}, Language{0x26, "slv"},        Language{0x27, "fin"},
    Language{0x28, "swe"},        Language{0x29, "tur"},        Language{0x2B, "wln"},
    Language{0x45, "zul"},        Language{0x46, "vie"},        Language{0x47, "uzb"},
    Language{0x48, "urd"},        Language{0x49, "ukr"},        Language{0x4A, "tha"},
    Language{0x4B, "tel"},        Language{0x4C, "tat"},        Language{0x4D, "tam"},
    Language{0x4E, "tgk"},        Language{0x4F, "swa"},        Language{0x50, "srn"},
    Language{0x51, "som"},        Language{0x52, "sin"},        Language{0x53, "sna"},
    Language{0x56, "rus"},        Language{0x57, "que"},        Language{0x58, "pus"},
    Language{0x59, "pan"},        Language{0x5A, "per", "fas"}, Language{0x5B, "pap"},
    Language{0x5C, "ori"},        Language{0x5D, "nep"},        Language{0x5E, "nde", "nbl"},
    Language{0x5F, "mar"},        Language{0x60, "mol"},        Language{0x61, "may", "msa"},
    Language{0x62, "mlg"},        Language{0x63, "mac", "mkd"}, Language{0x64, "lao"},
    Language{0x65, "kor"},        Language{0x66, "khm"},        Language{0x67, "kaz"},
    Language{0x68, "kan"},        Language{0x69, "jpn"},        Language{0x6A, "ind"},
    Language{0x6B, "hin"},        Language{0x6C, "heb"},        Language{0x6D, "hau"},
    Language{0x6F, "guj"},        Language{0x70, "gre", "ell"}, Language{0x71, "geo", "kat"},
    Language{0x72, "ful"},        Language{0x74, "chv"},        Language{0x75, "chi", "zho"},
    Language{0x76, "bur", "mya"}, Language{0x77, "bul"},        Language{0x78, "ben"},
    Language{0x79, "bel"},        Language{0x7A, "bam"},        Language{0x7B, "aze"},
    Language{0x7C, "asm"},        Language{0x7D, "arm", "hye"}, Language{0x7E, "ara"},
    Language{0x7F, "amh"},
};

} // namespace

std::optional<std::uint8_t> cdTextLanguage(QStringView code)
{
    const auto isNamed = [code](const Language &language) {
        return code == QLatin1StringView(language.code)
            || (language.otherCode && code == QLatin1StringView(language.otherCode));
    };
    const auto found = std::ranges::find_if(languages, isNamed);
    return found == languages.end() ? std::nullopt : std::optional(found->number);
}

} // namespace Tessaron
