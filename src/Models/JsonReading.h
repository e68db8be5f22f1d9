#pragma once

#include "Models/DecodingError.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <simdjson.h>

#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

/// How records are read from JSON: each record names its members once, in a table, and one reader
/// does the rest. Private to the rooms that decode; no public header includes it.
///
/// Keys that no table names are ignored; of a key written twice the first counts; null counts as
/// absent for an optional member. An integer is a whole number in the signed 64-bit range, written
/// as one: 1.0 and 1e3 are none.
namespace ostra::json {

/// A parsed text. Borrows the thread's parser, so that parsing many short texts allocates nothing.
class Document {
public:
    explicit Document(QByteArrayView text);
    ~Document();
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    /// Valid as long as the document.
    const Decoded<simdjson::dom::object> &root() const { return m_root; }

private:
    std::unique_ptr<simdjson::dom::parser> m_parser;
    Decoded<simdjson::dom::object> m_root;
};

enum class Presence { required, optional };

template <typename Record, typename Value>
struct Member {
    std::string_view key;
    Value Record::*value;
    Presence presence;
};

template <typename Record, typename Value>
constexpr Member<Record, Value> required(std::string_view key, Value Record::*value)
{
    return {key, value, Presence::required};
}

/// Keeps the value that the record was made with when the key is absent or null.
template <typename Record, typename Value>
constexpr Member<Record, Value> optional(std::string_view key, Value Record::*value)
{
    return {key, value, Presence::optional};
}

/// The table of a record's members: specialised for each record that can stand in a list or in
/// another record.
template <typename Record>
constexpr std::tuple<> kMembers{};

class Reader {
public:
    /// Reads the members in the table's order, so that of several faults the same one is always
    /// reported. False, with `error()` set, when one is missing or wrong.
    template <typename Record, typename... Values>
    bool readMembers(simdjson::dom::object object, Record &record,
                     const std::tuple<Member<Record, Values>...> &members);

    bool read(simdjson::dom::element element, QString &value);
    bool read(simdjson::dom::element element, bool &value);
    bool read(simdjson::dom::element element, qint64 &value);
    template <typename Value>
    bool read(simdjson::dom::element element, std::optional<Value> &value);
    template <typename Value>
    bool read(simdjson::dom::element element, QList<Value> &values);
    template <typename Record>
    bool read(simdjson::dom::element element, Record &record);

    const DecodingError &error() const { return m_error; }

private:
    template <typename Record, typename Value>
    bool readMember(const simdjson::dom::element *element, Record &record,
                    const Member<Record, Value> &member);
    bool fail(QString reason);
    bool failExpecting(const char *expected, simdjson::dom::element found);
    bool failInside(std::string_view key);
    bool failInside(qsizetype index);

    DecodingError m_error;
};

/// A whole text as one record.
template <typename Record, typename Members>
Decoded<Record> decode(QByteArrayView text, const Members &members)
{
    const Document document(text);
    if (!document.root()) {
        return tl::unexpected(document.root().error());
    }
    Record record;
    Reader reader;
    if (!reader.readMembers(*document.root(), record, members)) {
        return tl::unexpected(reader.error());
    }
    return record;
}

/// Which of `keys` a key is, looked for from `guess` on: keys mostly come in the table's order.
template <std::size_t N>
std::size_t indexOf(std::string_view key, const std::array<std::string_view, N> &keys,
                    std::size_t guess)
{
    for (std::size_t step = 0; step < N; ++step) {
        const std::size_t index = (guess + step) % N;
        if (keys[index] == key) {
            return index;
        }
    }
    return N;
}

template <typename Record, typename... Values>
bool Reader::readMembers(simdjson::dom::object object, Record &record,
                         const std::tuple<Member<Record, Values>...> &members)
{
    constexpr std::size_t count = sizeof...(Values);
    const auto keys = std::apply(
        [](const auto &...member) { return std::array<std::string_view, count>{member.key...}; },
        members);
    std::array<simdjson::dom::element, count> found;
    std::array<bool, count> present{};
    std::size_t guess = 0;
    for (const auto field : object) {
        const std::size_t index = indexOf(field.key, keys, guess);
        if (index < count && !present[index]) {
            found[index] = field.value;
            present[index] = true;
            guess = index + 1;
        }
    }
    return [&]<std::size_t... I>(std::index_sequence<I...>)
    {
        return (readMember(present[I] ? &found[I] : nullptr, record, std::get<I>(members)) && ...);
    }
    (std::make_index_sequence<count>());
}

template <typename Record, typename Value>
bool Reader::readMember(const simdjson::dom::element *element, Record &record,
                        const Member<Record, Value> &member)
{
    if (member.presence == Presence::optional && (!element || element->is_null())) {
        return true;
    }
    if (!element) {
        fail(QStringLiteral("missing"));
        return failInside(member.key);
    }
    return read(*element, record.*member.value) || failInside(member.key);
}

template <typename Value>
bool Reader::read(simdjson::dom::element element, std::optional<Value> &value)
{
    return read(element, value.emplace());
}

template <typename Value>
bool Reader::read(simdjson::dom::element element, QList<Value> &values)
{
    // A list of a few bytes per element must not reserve a record's size for each of them before
    // the first has proved to be one.
    constexpr std::size_t kTrusted = 4096;
    simdjson::dom::array array;
    if (element.get(array) != simdjson::SUCCESS) {
        return failExpecting("array", element);
    }
    values.reserve(static_cast<qsizetype>(std::min(array.size(), kTrusted)));
    for (const simdjson::dom::element item : array) {
        if (!read(item, values.emplaceBack())) {
            return failInside(values.size() - 1);
        }
    }
    return true;
}

template <typename Record>
bool Reader::read(simdjson::dom::element element, Record &record)
{
    static_assert(std::tuple_size_v<std::remove_cvref_t<decltype(kMembers<Record>)>> > 0,
                  "the record has no table of members");
    simdjson::dom::object object;
    if (element.get(object) != simdjson::SUCCESS) {
        return failExpecting("object", element);
    }
    return readMembers(object, record, kMembers<Record>);
}

} // namespace ostra::json
