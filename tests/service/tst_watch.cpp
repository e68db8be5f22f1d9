#include "SetFactory.h"
#include "Store/ProjectFile.h"
#include "Watch/FolderWatch.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostra;

class TestWatch : public QObject {
    Q_OBJECT

private slots:
    void aProjectThatComesBackIsToldByPlaceAndByIdentity_data();
    void aProjectThatComesBackIsToldByPlaceAndByIdentity();
};

void TestWatch::aProjectThatComesBackIsToldByPlaceAndByIdentity_data()
{
    QTest::addColumn<bool>("isBelowRoot");
    QTest::newRow("below a watched folder") << true;
    QTest::newRow("alone") << false;
}

void TestWatch::aProjectThatComesBackIsToldByPlaceAndByIdentity()
{
    QFETCH(const bool, isBelowRoot);
    const QTemporaryDir home;
    const QString album = home.filePath(QStringLiteral("Music/Album"));
    QVERIFY(QDir().mkpath(album + QStringLiteral("/.ostra")));
    QVERIFY(replaceFile(album + QStringLiteral("/Song.als"), SetFactory::set(1)));
    ProjectFile file;
    file.id = QStringLiteral("1f1c6e72");
    QVERIFY(file.save(album + QStringLiteral("/.ostra/project.json")));

    FolderWatch watch;
    if (isBelowRoot) {
        watch.setRoots({home.filePath(QStringLiteral("Music"))});
    }
    watch.setProjects({album});
    QSignalSpy gone(&watch, &FolderWatch::projectGone);
    QSignalSpy back(&watch, &FolderWatch::projectBack);
    QSignalSpy appeared(&watch, &FolderWatch::projectAppeared);
    const QString away = home.filePath(QStringLiteral("Away"));
    QVERIFY(QDir().rename(album, away));
    QTRY_COMPARE(gone.size(), 1);
    QVERIFY(QDir().rename(away, album));
    QTRY_COMPARE(back.size(), 1);
    QCOMPARE(back[0][0].toString(), album);
    QCOMPARE(appeared.size(), 1);
    const auto project = appeared[0][0].value<FoundProject>();
    QCOMPARE(project.path, album);
    QCOMPARE(project.projectId, file.id);
}

QTEST_GUILESS_MAIN(TestWatch)
#include "tst_watch.moc"
