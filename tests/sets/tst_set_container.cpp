#include "Music.h"
#include "Sets/Container.h"
#include "Sets/Set.h"
#include "SetSketch.h"

#include <QDir>
#include <QTest>

#include <zlib.h>

using namespace ostra;

class TestSetContainer : public QObject {
    Q_OBJECT

private slots:
    void readsGzipAndPlainXmlByTheirFirstBytes();
    void refusesWhatIsNoSet_data();
    void refusesWhatIsNoSet();
    void refusesABombBeforeItFillsTheMemory();
    void refusesMarkupThatWouldCostManyTimesItsSize();
    void refusesNestingDeeperThanAnyRack();
    void refusesEveryTruncation();
    void givesBackTheSameFile_data();
    void givesBackTheSameFile();
    void keepsForeignCompressionAsItIs();
    void givesBackEveryRealSet();
};

void TestSetContainer::readsGzipAndPlainXmlByTheirFirstBytes()
{
    const auto sketch = SetSketch::song();
    const auto packed = readSet(sketch.file());
    const auto plain = readSet(sketch.xml());
    QVERIFY(packed && plain);
    QCOMPARE(packed->xml(), plain->xml());
    QVERIFY(packed->container().isGzip());
    QVERIFY(!plain->container().isGzip());
}

void TestSetContainer::refusesWhatIsNoSet_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("message");
    const auto notASet = QStringLiteral("This is not an Ableton Live set.");
    const auto brokenXml = QStringLiteral("The set is damaged: its XML cannot be read.");
    const auto brokenGzip =
        QStringLiteral("The set is damaged: its compressed data cannot be read.");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("The set is empty.");
    QTest::newRow("junk") << QByteArray("junk\n") << notASet;
    QTest::newRow("other XML") << QByteArray("<?xml version=\"1.0\"?><html/>") << notASet;
    QTest::newRow("no set inside") << QByteArray("<Ableton><Other/></Ableton>") << notASet;
    QTest::newRow("unclosed") << QByteArray("<Ableton><LiveSet>") << brokenXml;
    QTest::newRow("mismatched") << QByteArray("<Ableton><LiveSet></Ableton></LiveSet>")
                                << brokenXml;
    QTest::newRow("half a header")
        << QByteArray("\x1f\x8b\x08\x08\0\0\0\0\0\3name", 14) << brokenGzip;
    QTest::newRow("nothing behind the header")
        << QByteArray("\x1f\x8b\x08\0\0\0\0\0\0\3", 10) << brokenGzip;
    auto changed = SetSketch::song().file();
    changed[changed.size() - 6] = static_cast<char>(changed[changed.size() - 6] ^ 0x55);
    QTest::newRow("wrong checksum") << changed << brokenGzip;
    QTest::newRow("trailing bytes") << SetSketch::song().file() + "more" << brokenGzip;
}

void TestSetContainer::refusesWhatIsNoSet()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QString, message);
    const auto set = readSet(file);
    QVERIFY(!set);
    QCOMPARE(set.error().message, message);
}

void TestSetContainer::refusesABombBeforeItFillsTheMemory()
{
    // 1 GB of blanks in a few MB.
    QByteArray bomb("\x1f\x8b\x08\0\0\0\0\0\0\3", 10);
    z_stream stream{};
    QVERIFY(deflateInit2(&stream, 1, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) == Z_OK);
    QByteArray blanks(1024 * 1024, ' ');
    QByteArray out(1024 * 1024, '\0');
    for (int i = 0; i <= 1024; ++i) {
        stream.next_in = reinterpret_cast<Bytef *>(blanks.data());
        stream.avail_in = i < 1024 ? static_cast<uInt>(blanks.size()) : 0;
        do {
            stream.next_out = reinterpret_cast<Bytef *>(out.data());
            stream.avail_out = static_cast<uInt>(out.size());
            deflate(&stream, i < 1024 ? Z_NO_FLUSH : Z_FINISH);
            bomb.append(out.constData(), out.size() - static_cast<qsizetype>(stream.avail_out));
        } while (stream.avail_out == 0);
    }
    deflateEnd(&stream);
    bomb.append(8, '\0');
    const auto set = readSet(bomb);
    QVERIFY(!set);
    QCOMPARE(set.error().message,
             QStringLiteral("The set is too large: it holds more than 512 MB."));
}

void TestSetContainer::refusesMarkupThatWouldCostManyTimesItsSize()
{
    QByteArray xml("<Ableton><LiveSet>");
    for (int i = 0; i < 1'000'000; ++i) {
        xml += "<a/>";
    }
    xml += "</LiveSet></Ableton>";
    QVERIFY(!readSet(xml));
}

void TestSetContainer::refusesNestingDeeperThanAnyRack()
{
    const auto nested = [](int depth) {
        QByteArray xml("<Ableton><LiveSet>");
        xml += QByteArray("<Deeper>").repeated(depth) + QByteArray("</Deeper>").repeated(depth);
        return readSet(xml + "</LiveSet></Ableton>").has_value();
    };
    QVERIFY(nested(150));
    QVERIFY(!nested(250));
    QVERIFY(!nested(100'000));
}

void TestSetContainer::refusesEveryTruncation()
{
    const auto file = SetSketch::song().file();
    for (qsizetype size = 0; size < file.size(); ++size) {
        QVERIFY2(!readSet(QByteArrayView(file).first(size)), qPrintable(QString::number(size)));
    }
    const auto xml = SetSketch::song().xml();
    for (qsizetype size = 0; size < xml.trimmed().size(); size += 97) {
        QVERIFY2(!readSet(QByteArrayView(xml).first(size)), qPrintable(QString::number(size)));
    }
}

void TestSetContainer::givesBackTheSameFile_data()
{
    QTest::addColumn<QString>("name");
    const QDir data(QStringLiteral(OSTRA_SET_DATA));
    for (const auto &name : data.entryList({QStringLiteral("*.als")})) {
        QTest::newRow(qPrintable(name)) << data.filePath(name);
    }
}

void TestSetContainer::givesBackTheSameFile()
{
    QFETCH(const QString, name);
    const auto file = readFile(name);
    const auto unpacked = unpackSet(file);
    QVERIFY(unpacked);
    const auto container = exactContainer(file, *unpacked);
    QVERIFY(container);
    QCOMPARE(packSet(unpacked->xml, *container), file);
}

void TestSetContainer::keepsForeignCompressionAsItIs()
{
    const auto unpacked = unpackSet(SetSketch::song().file());
    QVERIFY(unpacked);
    uLongf size = compressBound(static_cast<uLong>(unpacked->xml.size()));
    QByteArray zlib(static_cast<qsizetype>(size), '\0');
    QVERIFY(compress2(reinterpret_cast<Bytef *>(zlib.data()), &size,
                      reinterpret_cast<const Bytef *>(unpacked->xml.constData()),
                      static_cast<uLong>(unpacked->xml.size()), 1) == Z_OK);
    const auto live = SetSketch::song().file();
    // The same text compressed quicker and worse, with a file name in its header.
    const QByteArray foreign = QByteArray("\x1f\x8b\x08\x08\1\2\3\4\0\3song.xml\0", 19) +
                               zlib.mid(2, static_cast<qsizetype>(size) - 6) + live.last(8);
    const auto read = unpackSet(foreign);
    QVERIFY(read);
    QCOMPARE(read->xml, unpacked->xml);
    QVERIFY(!exactContainer(foreign, *read));
}

void TestSetContainer::givesBackEveryRealSet()
{
    qsizetype exact = 0;
    qsizetype stored = 0;
    for (const auto &path : realSets()) {
        const auto file = readFile(path);
        const auto unpacked = unpackSet(file);
        if (!unpacked) {
            QVERIFY2(path.contains(QStringLiteral("empty")) ||
                         path.contains(QStringLiteral("junk")),
                     qPrintable(path));
            continue;
        }
        const auto set = readSetXml(unpacked->xml, unpacked->container);
        QVERIFY2(set, qPrintable(path));
        QCOMPARE(set->xml(), unpacked->xml);
        if (const auto container = exactContainer(file, *unpacked)) {
            QVERIFY2(packSet(unpacked->xml, *container) == file, qPrintable(path));
            ++exact;
        } else {
            ++stored; // compressed by another tool: the file itself is kept
        }
    }
    qInfo() << exact << "files come back from their XML," << stored << "are kept as files";
}

QTEST_APPLESS_MAIN(TestSetContainer)
#include "tst_set_container.moc"
