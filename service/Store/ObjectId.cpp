#include "Store/ObjectId.h"

#include <string_view>

namespace ostra {

std::optional<ObjectId> ObjectId::fromHex(QByteArrayView hex)
{
    constexpr std::string_view kDigits("0123456789abcdef");
    ObjectId id;
    if (hex.size() != 2 * static_cast<qsizetype>(id.bytes.size())) {
        return std::nullopt;
    }
    for (size_t i = 0; i < id.bytes.size(); ++i) {
        const auto high = kDigits.find(hex[2 * static_cast<qsizetype>(i)]);
        const auto low = kDigits.find(hex[2 * static_cast<qsizetype>(i) + 1]);
        if (high == kDigits.npos || low == kDigits.npos) {
            return std::nullopt;
        }
        id.bytes[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return id;
}

std::optional<ObjectId> ObjectId::fromHex(QStringView hex)
{
    return fromHex(QByteArrayView(hex.toLatin1())); // what is no Latin-1 becomes "?"
}

QString ObjectId::hex() const
{
    const auto raw = QByteArray::fromRawData(reinterpret_cast<const char *>(bytes.data()),
                                             static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(raw.toHex());
}

} // namespace ostra
