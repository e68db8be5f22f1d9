#include "Core/Names.h"

#include <algorithm>

namespace ostra {

namespace {

constexpr qsizetype kLongestName = 1000;
constexpr qsizetype kLongestFileName = 255;
constexpr QLatin1StringView kSetSuffix(".als");

bool hasControlCharacter(const QString &name)
{
    return std::ranges::any_of(name, [](QChar c) { return c.unicode() < 0x20 || c == u'\x7f'; });
}

} // namespace

Outcome<QString> checkedName(const QString &typed, const QString &what)
{
    QString name = typed.trimmed();
    if (name.isEmpty()) {
        return failure(QStringLiteral("The %1 needs a name.").arg(what));
    }
    if (name.toUtf8().size() > kLongestName) {
        return failure(QStringLiteral("This name is too long for a %1.").arg(what));
    }
    if (hasControlCharacter(name)) {
        return failure(QStringLiteral("A name cannot contain line breaks or control characters."));
    }
    return name;
}

Outcome<QString> checkedAlbumName(const QString &typed)
{
    auto name = checkedName(typed, QStringLiteral("album version"));
    if (name && name->startsWith(kSnapshotPrefix)) {
        return failure(QStringLiteral("Names that begin with “auto/” are kept for snapshots."));
    }
    return name;
}

Outcome<QString> checkedSongFile(const QString &typed)
{
    auto name = checkedName(typed, QStringLiteral("song"));
    if (!name) {
        return name;
    }
    if (name->contains(u'/') || name->startsWith(u'.')) {
        return failure(
            QStringLiteral("The name of a song cannot contain “/” or begin with a dot."));
    }
    if (!name->endsWith(kSetSuffix)) {
        *name += kSetSuffix;
    }
    if (name->toUtf8().size() > kLongestFileName) {
        return failure(QStringLiteral("This name is too long for a file."));
    }
    return name;
}

QString songTitle(const QString &file)
{
    return file.endsWith(kSetSuffix) ? file.chopped(kSetSuffix.size()) : file;
}

} // namespace ostra
