#pragma once

#include <QString>

namespace ostra {

/// The folder of the application's own fonts, beside the running executable: `share/ostra/Fonts`
/// of its tree, or `Fonts` in the resources of a macOS bundle.
QString bundledFontsFolder();

/// Registers every "otf" file (in any case) of `folder` for this process, before any view is built.
/// A missing folder or an unreadable file is ignored: text then falls back to the default font.
/// Returns how many files were registered.
int registerBundledFonts(const QString &folder = bundledFontsFolder());

} // namespace ostra
