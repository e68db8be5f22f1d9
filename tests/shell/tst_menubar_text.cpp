#include "MenubarItem.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;
using State = DaemonState::ConnectionState;

class TestMenubarText : public QObject {
    Q_OBJECT

private slots:
    void saysTheStateInWords_data()
    {
        QTest::addColumn<State>("state");
        QTest::addColumn<int>("projects");
        QTest::addColumn<bool>("dirty");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << State::connected << 0 << false << u"OSTRA · watching 0 projects"_s;
        QTest::newRow("one") << State::connected << 1 << false << u"OSTRA · watching 1 project"_s;
        QTest::newRow("dirty") << State::connected << 3 << true
                               << u"OSTRA · watching 3 projects · unsaved changes"_s;
        QTest::newRow("connecting") << State::connecting << 3 << true << u"OSTRA · connecting…"_s;
        QTest::newRow("offline") << State::disconnected << 3 << true << u"OSTRA · offline"_s;
    }
    void saysTheStateInWords()
    {
        QFETCH(State, state);
        QFETCH(int, projects);
        QFETCH(bool, dirty);
        QFETCH(QString, text);
        QCOMPARE(menubarText(state, projects, dirty), text);
    }
};

QTEST_APPLESS_MAIN(TestMenubarText)
#include "tst_menubar_text.moc"
