#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstring>
#include <optional>

namespace ostra {

/// The name of an object of the history: the SHA-1 of what it holds.
struct ObjectId {
    std::array<unsigned char, 20> bytes{};

    static std::optional<ObjectId> fromHex(QByteArrayView hex);
    static std::optional<ObjectId> fromHex(QStringView hex);
    QString hex() const;
    QString shortHex() const { return hex().first(7); }
    bool isNull() const { return *this == ObjectId{}; }
    bool operator==(const ObjectId &) const = default;
    auto operator<=>(const ObjectId &) const = default;
};

inline size_t qHash(const ObjectId &id, size_t seed = 0) noexcept
{
    size_t value = 0;
    std::memcpy(&value, id.bytes.data(), sizeof value);
    return value ^ seed;
}

} // namespace ostra
