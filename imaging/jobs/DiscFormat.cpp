#include <TessaronClasses/DiscFormat.h>

namespace Tessaron
{

QString nameOfDiscFormat(DiscFormat format)
{
    switch (format) {
    case DiscFormat::ISO:
        return QStringLiteral("iso");
    case DiscFormat::BIN:
        return QStringLiteral("bin");
    case DiscFormat::VANT:
        return QStringLiteral("vant");
    }
    return {};
}

DiscFormat discFormatForFileName(const QByteArray &name)
{
    const QByteArray lower = name.toLower();
    if (lower.endsWith(".bin"))
        return DiscFormat::BIN;
    return lower.endsWith(".vant") ? DiscFormat::VANT : DiscFormat::ISO;
}

} // namespace Tessaron
