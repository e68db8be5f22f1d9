// Request lines, as any program of this user may send them to the service: each gets a command or
// a sentence, and a command that was read survives being written and read again.

#include "Models/Command.h"
#include "Protocol/CommandDecoder.h"
#include "Store/RefName.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView line(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto command = ostra::decodeCommand(line);
    if (!command) {
        if (command.error().isEmpty()) {
            std::abort();
        }
        return 0;
    }
    if (ostra::decodeCommand(ostra::encode(*command)) != *command) {
        std::abort();
    }
    const QByteArray component = ostra::encodeRefComponent(command->name.value_or(QString()));
    const auto name = ostra::decodeRefComponent(component);
    if (component.isEmpty() || component.size() > 200 || component.contains('/') ||
        (name && ostra::encodeRefComponent(*name) != component)) {
        std::abort();
    }
    return 0;
}
