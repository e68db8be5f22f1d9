#include "SetFactory.h"
#include "Store/AtomicFile.h"
#include "Store/History.h"
#include "Store/Packer.h"
#include "Store/ProjectFile.h"
#include "Store/RefName.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ostra;

Q_DECLARE_METATYPE(ostra::SetFactory::Wrapping)

class TestStore : public QObject {
    Q_OBJECT

private slots:
    void init();

    void namesBecomeComponentsAndBack_data();
    void namesBecomeComponentsAndBack();
    void namesThatDifferInCaseDoNotCollide();
    void overlongNamesAreToldApart();
    void foreignComponentsAreNotDecoded();
    void setsComeBackByteForByte_data();
    void setsComeBackByteForByte();
    void otherFilesAreNotWholeSets_data();
    void otherFilesAreNotWholeSets();
    void hugeInflatedSetIsRefused();
    void damagedContentIsNotCalledExact();
    void keepingTheSameSetTwiceCostsNothing();
    void aSetComesToTheDiskWithItsCommitOnly();
    void packingKeepsEverySaveAndShrinks();
    void repackingDropsWhatNothingLeadsTo();
    void whatWasDroppedIsWrittenAgain();
    void repackingRemovesNothingWhenTheReferencesHaveChanged();
    void damagedReferenceStopsRepacking();
    void albumsOfStrangersAreNotTrusted();
    void interruptedPackingIsCleanedUp();
    void projectFileIsReadAsWritten();
    void damagedProjectFileIsAbsent();
    void replacingKeepsTheModeAndTheLink();
    void replacingReturnsWhatWasWrittenLast();
    void renamingNeverOverwrites();
    void realSetsComeBackByteForByte();
    void realHistoryPacksSmall();

private:
    History open() { return std::move(*History::openForWriting(m_git)); }
    ObjectId record(History &history, const QByteArray &file, QList<ObjectId> parents = {});

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_git;
};

void TestStore::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_git = m_folder->filePath(QStringLiteral("history"));
}

ObjectId TestStore::record(History &history, const QByteArray &file, QList<ObjectId> parents)
{
    const auto tree = history.store(readImage(file));
    const auto hash = QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex();
    const auto commit =
        history.commit({tree, std::move(parents), QStringLiteral("Save"), 1'700'000'000, hash, {}});
    (void)history.setHead(QStringLiteral("Song.als"), QStringLiteral("main"), *commit);
    return *commit;
}

void TestStore::namesBecomeComponentsAndBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("component");
    const auto row = [](const char *name, const char *component) {
        QTest::newRow(name) << QString::fromUtf8(name) << QByteArray(component);
    };
    row("main", "main");
    row("Mix.als", "=mix.als");
    row("chorus idea", "chorus%20idea");
    row("a/b", "a%2fb");
    row("..", "%2e%2e");
    row("a..b", "a.%2eb");
    row(".hidden", "%2ehidden");
    row("end.", "end%2e");
    row("x.lock", "x%2elock");
    row("100%", "100%25");
    row("@{-1}", "%40%7b-1%7d");
    row("Ré", "=r%c3%a9");
    row("🎹", "%f0%9f%8e%b9");
    row("a=b", "a%3db");
}

void TestStore::namesBecomeComponentsAndBack()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, component);
    QCOMPARE(encodeRefComponent(name), component);
    QCOMPARE(decodeRefComponent(component), name);
}

void TestStore::namesThatDifferInCaseDoNotCollide()
{
    QVERIFY(encodeRefComponent(QStringLiteral("Mix")).toLower() !=
            encodeRefComponent(QStringLiteral("mix")).toLower());
}

void TestStore::overlongNamesAreToldApart()
{
    const QString long1 = QString(200, QChar(0x3042));
    const QByteArray component = encodeRefComponent(long1 + u'1');
    QVERIFY(component.size() <= 200);
    QVERIFY(component != encodeRefComponent(long1 + u'2'));
    QVERIFY(!decodeRefComponent(component));
}

void TestStore::foreignComponentsAreNotDecoded()
{
    QVERIFY(!decodeRefComponent("Capital"));
    QVERIFY(!decodeRefComponent("%zz"));
    QVERIFY(!decodeRefComponent("%61"));
}

void TestStore::setsComeBackByteForByte_data()
{
    QTest::addColumn<SetFactory::Wrapping>("wrapping");
    QTest::newRow("Live") << SetFactory::Wrapping{};
    QTest::newRow("Live on Windows") << SetFactory::Wrapping{.system = 11};
    QTest::newRow("smaller memory level") << SetFactory::Wrapping{.memoryLevel = 8};
    QTest::newRow("another level") << SetFactory::Wrapping{.level = 9};
    QTest::newRow("stored") << SetFactory::Wrapping{.level = 0};
    QTest::newRow("with a file name") << SetFactory::Wrapping{.fileName = "Song.als"};
}

void TestStore::setsComeBackByteForByte()
{
    QFETCH(SetFactory::Wrapping, wrapping);
    const QByteArray file = SetFactory::wrap(SetFactory::xml(1, 300), wrapping);
    auto history = open();
    const ObjectId commit = record(history, file);
    const auto rebuilt = history.rebuild(commit);
    QVERIFY(rebuilt);
    QCOMPARE(rebuilt->bytes, file);
    QVERIFY(rebuilt->isExact);
    QCOMPARE(history.xml(commit), SetFactory::xml(1, 300));
}

void TestStore::otherFilesAreNotWholeSets_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray whole = SetFactory::set(1, 300);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("junk") << QByteArray("junk\n");
    QTest::newRow("truncated") << whole.chopped(1);
    QTest::newRow("half") << whole.first(whole.size() / 2);
    QTest::newRow("header only") << whole.first(10);
    QByteArray damaged = whole;
    damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
    QTest::newRow("damaged") << damaged;
    QTest::newRow("another document") << SetFactory::wrap("<?xml version=\"1.0\"?><Other/>");
    QTest::newRow("half a plain document") << SetFactory::xml(1).chopped(30);
}

void TestStore::otherFilesAreNotWholeSets()
{
    QFETCH(QByteArray, file);
    QVERIFY(!readImage(file).isWhole());
    auto history = open(); // kept all the same when it must be
    const auto rebuilt = history.rebuild(record(history, file));
    QVERIFY(rebuilt && rebuilt->isExact);
    QCOMPARE(rebuilt->bytes, file);
}

void TestStore::hugeInflatedSetIsRefused()
{
    const QByteArray bomb = SetFactory::wrap(QByteArray(kMaxInflatedSize + 1, ' '), {.level = 1});
    QVERIFY(bomb.size() < 4 * 1024 * 1024);
    QVERIFY(!readImage(bomb).isWhole());
}

void TestStore::damagedContentIsNotCalledExact()
{
    auto history = open();
    const auto tree = history.store(readImage(SetFactory::set(1)));
    const auto commit =
        history.commit({tree, {}, QStringLiteral("Save"), 0, QByteArray(64, '0'), {}});
    QVERIFY(!history.rebuild(*commit)->isExact);
}

void TestStore::keepingTheSameSetTwiceCostsNothing()
{
    auto history = open();
    const ObjectId first = record(history, SetFactory::set(1));
    const qint64 size = history.sizeOnDisk();
    QCOMPARE(record(history, SetFactory::set(1)), first);
    QCOMPARE(history.sizeOnDisk(), size);
}

void TestStore::aSetComesToTheDiskWithItsCommitOnly()
{
    auto history = open();
    const qint64 empty = history.sizeOnDisk();
    (void)history.store(readImage(SetFactory::set(2)));
    const ObjectId tree = history.store(readImage(SetFactory::set(1)));
    QCOMPARE(history.sizeOnDisk(), empty);
    const auto commit = history.commit({tree, {}, QStringLiteral("Save"), 0, {}, {}});
    QVERIFY(commit);
    QCOMPARE(open().rebuild(*commit)->bytes, SetFactory::set(1));
    QVERIFY(!open().holds(readImage(SetFactory::set(2))));
}

void TestStore::packingKeepsEverySaveAndShrinks()
{
    auto history = open();
    QList<ObjectId> commits;
    for (int i = 0; i < 30; ++i) {
        commits.append(record(history, SetFactory::set(i, 400),
                              commits.isEmpty() ? QList<ObjectId>() : QList{commits.last()}));
    }
    const qint64 before = history.sizeOnDisk();
    QVERIFY(Packer::isWorthwhile(m_git));
    QVERIFY(Packer::packLoose(m_git));
    QVERIFY(!Packer::isWorthwhile(m_git));
    QVERIFY(history.sizeOnDisk() < before / 4);
    for (int i = 0; i < commits.size(); ++i) { // through the handle from before the packing
        const auto rebuilt = history.rebuild(commits[i]);
        QVERIFY(rebuilt && rebuilt->isExact);
        QCOMPARE(rebuilt->bytes, SetFactory::set(i, 400));
    }
    QCOMPARE(open().everySave()->size(), 30);
}

void TestStore::repackingDropsWhatNothingLeadsTo()
{
    auto history = open();
    const ObjectId lost = record(history, SetFactory::set(1));
    const ObjectId kept = record(history, SetFactory::set(2)); // moves the only reference
    QVERIFY(Packer::packLoose(m_git));
    QVERIFY(open().hasObject(lost));
    const auto repacked = Packer::repack(m_git);
    QVERIFY(repacked && Packer::removeReplaced(*repacked));
    QVERIFY(!open().hasObject(lost));
    QVERIFY(open().rebuild(kept)->isExact);
}

void TestStore::whatWasDroppedIsWrittenAgain()
{
    auto history = open();
    record(history, SetFactory::set(1));
    record(history, SetFactory::set(2)); // moves the only reference
    QVERIFY(Packer::packLoose(m_git));
    QVERIFY(history.holds(readImage(SetFactory::set(1)))); // seen in the pack that goes now
    const auto repacked = Packer::repack(m_git);
    QVERIFY(repacked && Packer::removeReplaced(*repacked));
    history.rest();
    const ObjectId again = record(history, SetFactory::set(1));
    QVERIFY(open().rebuild(again)->isExact);
}

void TestStore::repackingRemovesNothingWhenTheReferencesHaveChanged()
{
    auto history = open();
    record(history, SetFactory::set(1));
    const auto repacked = Packer::repack(m_git);
    QVERIFY(repacked);
    const ObjectId meanwhile = record(history, SetFactory::set(2));
    QVERIFY(!Packer::removeReplaced(*repacked));
    QVERIFY(open().rebuild(meanwhile)->isExact);
}

void TestStore::damagedReferenceStopsRepacking()
{
    auto history = open();
    const ObjectId kept = record(history, SetFactory::set(1));
    QFile reference(m_git + QStringLiteral("/refs/heads/song/=song.als/main"));
    QVERIFY(reference.open(QIODevice::WriteOnly)); // empty, as a power cut may leave it
    reference.close();
    QVERIFY(!Packer::repack(m_git));
    QVERIFY(open().hasObject(kept));
}

void TestStore::albumsOfStrangersAreNotTrusted()
{
    auto history = open();
    const auto tree = history.store(readImage(SetFactory::set(1)));
    for (const char *text :
         {"[]", "{\"songs\":[5],\"name\":3,\"created\":\"x\"}",
          "{\"songs\":[{\"file\":7}],\"name\":\"n\",\"created\":1}", "{\"songs\":{}}"}) {
        const auto commit = history.commit({tree, {}, QString::fromUtf8(text), 0, {}, {}});
        QVERIFY(QDir().mkpath(m_git + QStringLiteral("/refs/tags/album")));
        QVERIFY(replaceFile(m_git + QStringLiteral("/refs/tags/album/evil"),
                            commit->hex().toLatin1() + '\n'));
        QVERIFY(open().albums().isEmpty());
    }
}

void TestStore::interruptedPackingIsCleanedUp()
{
    auto history = open();
    const ObjectId commit = record(history, SetFactory::set(1));
    const QStringList leftovers{QStringLiteral("/objects/pack/pack_git2_abcdef"),
                                QStringLiteral("/objects/12/.ostra-abcdef.tmp"),
                                QStringLiteral("/refs/heads/song/=song.als/main.lock")};
    for (const QString &name : leftovers) {
        QVERIFY(QDir().mkpath(QFileInfo(m_git + name).absolutePath()));
        QFile file(m_git + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    auto again = open();
    for (const QString &name : leftovers) {
        QVERIFY(!QFile::exists(m_git + name));
    }
    QVERIFY(again.setHead(QStringLiteral("Song.als"), QStringLiteral("main"), commit));
}

void TestStore::projectFileIsReadAsWritten()
{
    ProjectFile file;
    file.id = QStringLiteral("id");
    file.name = QStringLiteral("Näme \"quoted\"");
    file.createdAt = 5;
    file.songs = {{QStringLiteral("A.als"),
                   QStringLiteral("b"),
                   {QStringLiteral("main"), QStringLiteral("b")},
                   {QStringLiteral("first mix")}}};
    file.albums = {QStringLiteral("demo")};
    file.trashLookedAt = 9;
    file.trash = {{QStringLiteral("t"),
                   7,
                   QStringLiteral("B.als"),
                   QStringLiteral("main"),
                   {QStringLiteral("main")},
                   QStringLiteral("x"),
                   true,
                   11}};
    file.rewrites = {
        {QStringLiteral("A.als"), QStringLiteral("main"), *ObjectId::fromHex(QString(40, u'a'))}};
    file.rename = PendingRename{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("A.als")};
    const QString path = m_folder->filePath(QStringLiteral("project.json"));
    QVERIFY(file.save(path));
    QCOMPARE(ProjectFile::load(path), file);
}

void TestStore::damagedProjectFileIsAbsent()
{
    const QString path = m_folder->filePath(QStringLiteral("project.json"));
    for (const QByteArray &content :
         {QByteArray(), QByteArray("{\"id\":"), QByteArray("[]"), QByteArray("{\"id\":3}")}) {
        QVERIFY(replaceFile(path, content));
        QVERIFY(!ProjectFile::load(path));
    }
}

void TestStore::replacingKeepsTheModeAndTheLink()
{
    const QString path = m_folder->filePath(QStringLiteral("real"));
    const QString link = m_folder->filePath(QStringLiteral("link"));
    QVERIFY(replaceFile(path, "one"));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    QVERIFY(QFile::link(path, link));
    const auto permissions = QFile::permissions(path);
    QVERIFY(replaceFile(link, "two"));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(*readWholeFile(path), QByteArray("two"));
    QCOMPARE(QFile::permissions(path), permissions);
}

void TestStore::replacingReturnsWhatWasWrittenLast()
{
    const QString path = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(replaceFile(path, "before"));
    const auto replaced = replaceKeepingPrevious(path, "after");
    QVERIFY(replaced);
    QCOMPARE(*readWholeFile(path), QByteArray("after"));
    QCOMPARE(stampOf(path), replaced->written);
    QCOMPARE(*readWholeFile(replaced->previousAsPath), QByteArray("before"));
    QVERIFY(isTemporaryName(QFileInfo(replaced->previousAsPath).fileName()));
}

void TestStore::renamingNeverOverwrites()
{
    const QString one = m_folder->filePath(QStringLiteral("one"));
    const QString two = m_folder->filePath(QStringLiteral("two"));
    QVERIFY(replaceFile(one, "1"));
    QVERIFY(replaceFile(two, "2"));
    QVERIFY(!renameWithoutOverwriting(one, two));
    QCOMPARE(*readWholeFile(two), QByteArray("2"));
}

/// Real sets are not part of the project: OSTRA_REAL_SETS names a folder of them, else one that
/// lies beside the project is taken.
static QString realSets()
{
    const QString named = qEnvironmentVariable("OSTRA_REAL_SETS", QStringLiteral(OSTRA_BESIDE));
    return QDir(named).exists() ? named : QString();
}

void TestStore::realSetsComeBackByteForByte()
{
    if (realSets().isEmpty()) {
        qInfo("there is no folder of real sets: only generated sets were tried");
        return;
    }
    auto history = open();
    int whole = 0;
    int rebuiltFromXml = 0;
    QDirIterator files(realSets(), {QStringLiteral("*.als")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QByteArray file = *readWholeFile(files.next());
        const SetImage image = readImage(file);
        whole += image.isWhole() ? 1 : 0;
        rebuiltFromXml += image.exact ? 1 : 0;
        const auto rebuilt = history.rebuild(record(history, file));
        QVERIFY2(rebuilt && rebuilt->isExact && rebuilt->bytes == file,
                 qPrintable(files.filePath()));
    }
    qInfo("%d real sets came back byte for byte, %d of them from their XML", whole, rebuiltFromXml);
    QVERIFY(whole > 0);
}

void TestStore::realHistoryPacksSmall()
{
    const QDir saves(realSets() + QStringLiteral("/krahd__audio_scripter/hist/test"));
    if (realSets().isEmpty() || !saves.exists()) {
        qInfo("there is no folder of real sets: the size of a real history was not measured");
        return;
    }
    auto history = open();
    QList<ObjectId> commits;
    qint64 sum = 0;
    const QStringList names = saves.entryList({QStringLiteral("*.als")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        const QByteArray file = *readWholeFile(saves.filePath(name));
        sum += file.size();
        commits.append(
            record(history, file, commits.isEmpty() ? QList<ObjectId>() : QList{commits.last()}));
    }
    QVERIFY(Packer::packLoose(m_git));
    qint64 packed = 0;
    QDirIterator objects(m_git + QStringLiteral("/objects"), QDir::Files,
                         QDirIterator::Subdirectories);
    while (objects.hasNext()) {
        objects.next();
        packed += objects.fileInfo().size();
    }
    for (qsizetype i = 0; i < commits.size(); ++i) {
        QCOMPARE(history.rebuild(commits[i])->bytes, *readWholeFile(saves.filePath(names[i])));
    }
    qInfo("%lld saves: %lld bytes as files, %lld packed, %.3f", commits.size(), sum, packed,
          double(packed) / double(sum));
    QVERIFY(double(packed) <= 0.3 * double(sum));
}

QTEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
