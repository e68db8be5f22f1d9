#pragma once

#include <QString>

#include <cstdio>

/// What can be done to a project's history from the command line, beside a running service: both
/// only read it. They print what they do and answer with the program's exit code.
namespace ostra::Inspect {

/// Rebuilds every save and compares it with the fingerprint taken when it was recorded. 0 when all
/// are whole, 1 when not, 2 when there is no history.
int check(const QString &project, std::FILE *out);

/// Writes every save as a plain set file into `folder`, which must be new or empty. One folder per
/// song and variation, saves numbered from the oldest. 0 when all were written.
int exportAll(const QString &project, const QString &folder, std::FILE *out);

} // namespace ostra::Inspect
