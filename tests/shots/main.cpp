#include "Scene.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <cstdio>

namespace ostra {

std::map<QString, Scene::Build> &Scene::all()
{
    static std::map<QString, Build> scenes;
    return scenes;
}

} // namespace ostra

/// Draws every scene whose name contains one of the given words (all without any) into a folder.
int main(int argc, char *argv[])
{
    using namespace Qt::StringLiterals;
    using namespace ostra;
    qputenv("HOME", "/home/ada");
    qputenv("TZ", "UTC");
    const QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument(u"folder"_s, u"where the pictures go"_s);
    parser.addPositionalArgument(u"words"_s, u"parts of scene names"_s);
    parser.process(app);
    QStringList words = parser.positionalArguments();
    const QDir folder(words.isEmpty() ? u"."_s : words.takeFirst());
    const QString scale = QString::number(app.devicePixelRatio());
    for (const auto &[name, build] : Scene::all()) {
        const auto isPart = [&name = name](const QString &word) {
            return name.contains(word);
        };
        if (!words.isEmpty() && !std::ranges::any_of(words, isPart)) {
            continue;
        }
        ViewFixture view;
        build(view);
        view.settle();
        const QString file = folder.filePath(name + u'@' + scale + u"x.png"_s);
        if (!view.view->grabWindow().save(file)) {
            std::fprintf(stderr, "%s could not be written\n", qPrintable(file));
            return 1;
        }
        std::printf("%s\n", qPrintable(file));
    }
    return 0;
}
