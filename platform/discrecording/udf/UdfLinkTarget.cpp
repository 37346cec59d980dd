#include "platform/discrecording/udf/UdfLinkTarget.h"

#include "platform/discrecording/names/UdfNameRules.h"
#include "platform/discrecording/udf/UdfCompressedText.h"

#include <QString>

#include <cstddef>

namespace Tessaron
{

namespace
{

enum ComponentType : char {
    Root = 2,
    Parent = 3,
    Itself = 4,
    Name = 5,
};

/// Type, length of the name, version (2 bytes, 0 for any), name.
void addComponent(std::string &components, ComponentType type, std::string_view name = {})
{
    components += static_cast<char>(type);
    components += static_cast<char>(name.size());
    components.append(2, '\0').append(name);
}

} // namespace

UdfLinkTarget udfLinkTarget(std::string_view target)
{
    UdfLinkTarget result;
    std::string read; // what a reader makes of it
    if (target.starts_with('/')) {
        addComponent(result.components, Root);
        read += '/';
    }
    for (std::size_t at = 0; at < target.size();) {
        const std::string_view name = target.substr(at, target.find('/', at) - at);
        at += name.size() + 1;
        if (name.empty())
            continue;
        if (!read.empty() && read != "/")
            read += '/';
        read += name;
        if (name == ".") {
            addComponent(result.components, Itself);
        } else if (name == "..") {
            addComponent(result.components, Parent);
        } else {
            UdfCompressedText recorded;
            if (!recorded.assignPlain(name)) {
                const std::u16string text = udfName(name, false);
                recorded.assign(text);
                const QByteArrayView raw(name.data(), static_cast<qsizetype>(name.size()));
                result.hasChangedNames |= QStringView(text).toUtf8() != raw;
            }
            addComponent(result.components, Name, recorded.view());
        }
    }
    result.isSimplified = read != target;
    return result;
}

} // namespace Tessaron
