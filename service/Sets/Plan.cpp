#include "Sets/Plan.h"

#include <algorithm>

namespace ostra {

namespace {

QString classOf(const Lines &lines)
{
    const auto all = [&](QLatin1String kind) {
        return !lines.isEmpty() &&
               std::ranges::all_of(lines, [&](const auto &line) { return line.kind == kind; });
    };
    return all(QLatin1String("add"))      ? QStringLiteral("addition")
           : all(QLatin1String("remove")) ? QStringLiteral("removal")
                                          : QStringLiteral("overwrite");
}

} // namespace

void describe(Proposal &proposal, const Lines &lines, const QString &fallback,
              const QString &category)
{
    proposal.category = lines.isEmpty() ? category : lines.first().category.value_or(category);
    proposal.deltaClass = classOf(lines);
    proposal.summary = lines.isEmpty() ? fallback : lines.first().text;
    if (lines.size() > 1) {
        QStringList rest;
        for (const auto &line : lines.sliced(1)) {
            rest.append(line.text);
        }
        proposal.detail = rest.join(QStringLiteral(" · "));
    }
}

QString stateText(const Lines &lines, const QString &track, const QString &fallback)
{
    constexpr qsizetype kShown = 3;
    if (lines.isEmpty()) {
        return fallback;
    }
    QStringList texts;
    for (const auto &line : lines.first(std::min(kShown, lines.size()))) {
        auto text = line.text;
        if (text.startsWith(track)) {
            text.remove(0, track.size());
            while (text.startsWith(u':') || text.startsWith(u',') || text.startsWith(u' ')) {
                text.remove(0, 1);
            }
        }
        texts.append(text);
    }
    if (lines.size() > kShown) {
        texts.append(QStringLiteral("%1 more").arg(lines.size() - kShown));
    }
    return texts.join(QStringLiteral(" · "));
}

} // namespace ostra
