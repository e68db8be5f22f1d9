#include "Design/DSHelp.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimerEvent>

namespace ostra {

namespace {

// As long as the platforms' own tool tips wait.
constexpr int kHelpDelayMs = 700;
constexpr char kTipOfWindow[] = "_ostraToolTip";

} // namespace

DSHelp::DSHelp(QObject *parent) : QObject(parent)
{
    if (auto *host = qobject_cast<QQuickItem *>(parent)) {
        host->setAcceptHoverEvents(true);
        host->installEventFilter(this);
        // What goes away under the pointer is not told that the pointer left.
        connect(host, &QQuickItem::visibleChanged, this, &DSHelp::hide);
    }
}

DSHelp::~DSHelp()
{
    if (m_shownBy) {
        QMetaObject::invokeMethod(m_shownBy, "close");
    }
}

void DSHelp::setText(const QString &text)
{
    if (m_text == text) {
        return;
    }
    m_text = text;
    if (m_shownBy) {
        text.isEmpty() ? hide() : show();
    }
    emit textChanged();
}

bool DSHelp::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::HoverEnter:
        if (!m_text.isEmpty()) {
            m_delay.start(kHelpDelayMs, this);
        }
        break;
    case QEvent::HoverLeave:
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
        hide();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void DSHelp::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_delay.timerId()) {
        m_delay.stop();
        show();
    }
}

QObject *DSHelp::tip()
{
    QQuickWindow *window = item()->window();
    if (auto *existing = window->property(kTipOfWindow).value<QObject *>()) {
        return existing;
    }
    QQmlEngine *engine = qmlEngine(item());
    if (engine == nullptr) {
        return nullptr;
    }
    QQmlComponent component(engine, QUrl(QStringLiteral("qrc:/qt/qml/Ostra/Design/DSToolTip.qml")));
    QObject *made = component.create(engine->rootContext());
    if (made != nullptr) {
        made->setParent(window);
        window->setProperty(kTipOfWindow, QVariant::fromValue(made));
    }
    return made;
}

void DSHelp::show()
{
    if (item()->window() == nullptr || !item()->isVisible() || m_text.isEmpty()) {
        return;
    }
    m_shownBy = tip();
    if (m_shownBy) {
        m_shownBy->setProperty("parent", QVariant::fromValue(item()));
        m_shownBy->setProperty("text", m_text);
        QMetaObject::invokeMethod(m_shownBy, "open");
    }
}

void DSHelp::hide()
{
    m_delay.stop();
    // The tip may meanwhile speak for another item.
    if (m_shownBy && m_shownBy->property("parent").value<QQuickItem *>() == item()) {
        QMetaObject::invokeMethod(m_shownBy, "close");
    }
    m_shownBy.clear();
}

} // namespace ostra
