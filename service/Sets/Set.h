#pragma once

#include "Sets/Container.h"
#include "Sets/SetError.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <memory>

namespace ostra {

class SetDocument;

/// One set, read: its text, its parsed tree and the musical model over it. A cheap handle to an
/// immutable value, so it may be copied and used on any thread.
class Set {
public:
    explicit Set(std::shared_ptr<const SetDocument> document) : m_document(std::move(document)) {}

    const SetDocument &document() const { return *m_document; }
    const QByteArray &xml() const;
    const Container &container() const;
    QString creator() const; ///< "Ableton Live 12.3.7"

private:
    std::shared_ptr<const SetDocument> m_document;
};

/// Reads the bytes of a set file of Live 8 to 12. Takes at most eight times the size of the XML in
/// memory. Never crashes or hangs, whatever the bytes are. Thread-safe.
SetResult<Set> readSet(QByteArrayView file);

/// Reads a set whose XML is already at hand.
SetResult<Set> readSetXml(QByteArray xml, Container container = {});

/// What a set must fulfil before it may be written: unique pointees below the counter, no
/// reference into nothing, as many sends as returns, as many slots as scenes, returns last, groups
/// contiguous. Empty when all hold, else one sentence per violation (at most 20).
QStringList validateSet(const Set &set);

} // namespace ostra
