#include <QCloseEvent>
#include <QGuiApplication>
#include <QRasterWindow>

#include <cstdio>

// Stands in for an application with windows: tells the id of its main one on standard output, then
// every request to close one.
//   fake_live [refuse] [dialog] [minimised]

namespace {

class Window : public QRasterWindow {
public:
    Window(const QString &title, bool refuses) : m_refuses(refuses)
    {
        setTitle(title);
        resize(120, 80);
    }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        std::printf("asked %s\n", qPrintable(title()));
        std::fflush(stdout);
        event->setAccepted(!m_refuses);
    }

private:
    bool m_refuses;
};

} // namespace

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    const auto options = QGuiApplication::arguments();
    const bool refuses = options.contains(QStringLiteral("refuse"));

    Window main(QStringLiteral("main"), refuses);
    main.setVisibility(options.contains(QStringLiteral("minimised")) ? QWindow::Minimized
                                                                     : QWindow::Windowed);
    Window dialog(QStringLiteral("dialog"), refuses);
    dialog.setTransientParent(&main);
    dialog.setFlag(Qt::Dialog);
    dialog.setVisible(options.contains(QStringLiteral("dialog")));

    std::printf("%llu\n", static_cast<unsigned long long>(main.winId()));
    std::fflush(stdout);
    return QGuiApplication::exec();
}
