#pragma once

#include "Models/Event.h"
#include "Models/Response.h"

#include <memory>

namespace ostra {

namespace json {
class Document;
}

/// One received line, parsed once and then read as what it proves to be. Stays on the thread that
/// made it.
class Line {
public:
    explicit Line(QByteArrayView text);
    ~Line();
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    /// It names an "event" and no "type". Everything else is a reply, or nothing at all.
    bool isEvent() const;
    Decoded<IPCResponse> response() const;
    Decoded<DaemonEvent> event() const;

private:
    std::unique_ptr<json::Document> m_document;
};

} // namespace ostra
