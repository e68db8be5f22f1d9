#include "Models/Event.h"

#include "Models/JsonReading.h"
#include "Models/Line.h"

namespace ostra {

namespace {

using json::optional;
using json::required;
using simdjson::dom::object;

constexpr std::tuple kHeadMembers{required("event", &Event::Unknown::event)};
constexpr std::tuple kSaveMembers{
    required("repo", &Event::SaveDetected::repo),
    optional("path", &Event::SaveDetected::path),
    required("commit", &Event::SaveDetected::commit),
    required("delta_count", &Event::SaveDetected::deltaCount),
};
constexpr std::tuple kErrorMembers{required("message", &Event::Error::message)};

template <typename Case, typename Members>
Decoded<DaemonEvent> decodeAs(object object, const Members &members)
{
    Case event;
    json::Reader reader;
    if (!reader.readMembers(object, event, members)) {
        return tl::unexpected(reader.error());
    }
    return DaemonEvent(std::move(event));
}

} // namespace

Decoded<DaemonEvent> Line::event() const
{
    const Decoded<object> &root = m_document->root();
    if (!root) {
        return tl::unexpected(root.error());
    }
    const auto head = decodeAs<Event::Unknown>(*root, kHeadMembers);
    if (!head) {
        return head;
    }
    const QString &name = std::get<Event::Unknown>(*head).event;
    if (name == u"save_detected") {
        return decodeAs<Event::SaveDetected>(*root, kSaveMembers);
    }
    if (name == u"error") {
        return decodeAs<Event::Error>(*root, kErrorMembers);
    }
    return head;
}

} // namespace ostra
