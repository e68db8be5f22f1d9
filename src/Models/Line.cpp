#include "Models/Line.h"

#include "Models/JsonReading.h"

namespace ostra {

namespace {

struct FrameProbe {
    std::optional<QString> type;
    std::optional<QString> event;
};

constexpr std::tuple kProbeMembers{
    json::optional("type", &FrameProbe::type),
    json::optional("event", &FrameProbe::event),
};

} // namespace

Line::Line(QByteArrayView text) : m_document(std::make_unique<json::Document>(text)) {}

Line::~Line() = default;

bool Line::isEvent() const
{
    FrameProbe probe;
    json::Reader reader;
    return m_document->root() && reader.readMembers(*m_document->root(), probe, kProbeMembers) &&
           probe.event && !probe.type;
}

Decoded<IPCResponse> decodeResponse(QByteArrayView line)
{
    return Line(line).response();
}

Decoded<DaemonEvent> decodeEvent(QByteArrayView line)
{
    return Line(line).event();
}

} // namespace ostra
