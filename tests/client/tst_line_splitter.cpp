#include "LineSplitter.h"
#include "support/Samples.h"

#include <QElapsedTimer>
#include <QTest>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

void takeLines(LineSplitter &splitter, QByteArrayView chunk, QByteArrayList &lines)
{
    splitter.append(chunk);
    while (const auto line = splitter.next()) {
        lines.append(line->toByteArray());
    }
}

QByteArrayList linesInChunks(const QByteArray &stream, const QList<qsizetype> &cuts)
{
    LineSplitter splitter;
    QByteArrayList lines;
    qsizetype start = 0;
    for (const qsizetype cut : cuts) {
        takeLines(splitter, QByteArrayView(stream).sliced(start, cut - start), lines);
        start = cut;
    }
    takeLines(splitter, QByteArrayView(stream).sliced(start), lines);
    return lines;
}

QByteArrayList linesInChunksOf(const QByteArray &stream, qsizetype size)
{
    QList<qsizetype> cuts;
    for (qsizetype cut = size; cut < stream.size(); cut += size) {
        cuts.append(cut);
    }
    return linesInChunks(stream, cuts);
}

/// Bytes in use on the heap; nothing where that cannot be told.
std::optional<std::size_t> heapInUse()
{
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return std::nullopt;
#endif
}

QByteArrayList allSamples()
{
    QByteArrayList all;
    for (const QString &name : sampleNames(u"replies"_s) + sampleNames(u"events"_s)) {
        all.append(sample(name));
    }
    return all;
}

} // namespace

class TestLineSplitter : public QObject {
    Q_OBJECT

private slots:
    void nothingComesWithoutALineFeed()
    {
        LineSplitter splitter;
        QVERIFY(!splitter.next());
        splitter.append("{\"type\"");
        QVERIFY(!splitter.next());
        splitter.append(":\"ok\"}");
        QVERIFY(!splitter.next());
        splitter.append("\n");
        QCOMPARE(splitter.next(), QByteArrayView("{\"type\":\"ok\"}"));
        QVERIFY(!splitter.next());
    }
    void onlyTheLineFeedSeparates()
    {
        QCOMPARE(linesInChunks(QByteArray("a\r\nb\0c\n\x0b\n\n", 10), {}),
                 (QByteArrayList{"a\r", QByteArray("b\0c", 3), "\x0b", ""}));
    }
    void resetForgetsHalfALine()
    {
        LineSplitter splitter;
        splitter.append("whole\nhalf");
        splitter.reset();
        QVERIFY(!splitter.next());
        splitter.append("new\n");
        QCOMPARE(splitter.next(), QByteArrayView("new"));
    }
    void linesThatWereNotTakenWaitForTheNextCall()
    {
        LineSplitter splitter;
        QByteArrayList lines;
        for (int i = 0; i < 1000; ++i) {
            splitter.append(QByteArray::number(i) + "\n" + QByteArray::number(i) + "'\n");
            lines.append(splitter.next()->toByteArray());
        }
        while (const auto line = splitter.next()) {
            lines.append(line->toByteArray());
        }
        QCOMPARE(lines.size(), 2000);
        for (int i = 0; i < 1000; ++i) {
            QCOMPARE(lines[2 * i], QByteArray::number(i));
            QCOMPARE(lines[2 * i + 1], QByteArray::number(i) + "'");
        }
    }

    void everySampleInTwoPiecesCutAnywhere()
    {
        for (const QByteArray &line : allSamples()) {
            const QByteArray stream = line + "\nnext";
            for (qsizetype cut = 0; cut <= stream.size(); ++cut) {
                QCOMPARE(linesInChunks(stream, {cut}), QByteArrayList{line});
            }
        }
    }
    void everySampleInThreePiecesCutAnywhere()
    {
        for (const QByteArray &line : allSamples()) {
            const QByteArray stream =
                "first\n" + line.first(std::min<qsizetype>(line.size(), 120)) + "\n\nlast\n";
            const QByteArrayList whole = linesInChunks(stream, {});
            for (qsizetype first = 0; first <= stream.size(); ++first) {
                for (qsizetype second = first; second <= stream.size(); ++second) {
                    QVERIFY(linesInChunks(stream, {first, second}) == whole);
                }
            }
        }
    }
    void allSamplesTogetherInChunksOfAnySize()
    {
        const QByteArrayList lines = allSamples();
        const QByteArray stream = lines.join('\n') + '\n';
        for (qsizetype size = 1; size <= 300; ++size) {
            QCOMPARE(linesInChunksOf(stream, size), lines);
        }
        QCOMPARE(linesInChunksOf(stream, 65'536), lines);
        for (qsizetype cut = 0; cut <= stream.size(); ++cut) {
            QVERIFY(linesInChunks(stream, {cut}) == lines);
        }
    }

    void aLongLineInSmallChunksIsSearchedOnce()
    {
        // Searched again from its start by each chunk it would take minutes.
        constexpr qsizetype kLength = 64 << 20;
        const QByteArray chunk(1024, 'x');
        LineSplitter splitter;
        QElapsedTimer elapsed;
        elapsed.start();
        for (qsizetype size = 0; size < kLength; size += chunk.size()) {
            splitter.append(chunk);
            QVERIFY(!splitter.next());
        }
        splitter.append("\n");
        QCOMPARE(splitter.next()->size(), kLength);
        QVERIFY2(elapsed.elapsed() < 10'000, qPrintable(QString::number(elapsed.elapsed())));
    }
    void theMemoryOfALongLineIsGivenBackOnceItHasBeenTaken()
    {
        const std::optional<std::size_t> before = heapInUse();
        LineSplitter splitter;
        splitter.append(QByteArray(16 << 20, 'x'));
        splitter.append("\n");
        QCOMPARE(splitter.next()->size(), 16 << 20);
        QVERIFY(!splitter.next());
        if (before) {
            QVERIFY(*heapInUse() < *before + (1 << 20));
        }
        splitter.append("next\n");
        QCOMPARE(splitter.next(), QByteArrayView("next"));
    }
    void manyShortLinesInOneChunkAreNotMovedForEachOther()
    {
        const QByteArray chunk = QByteArray("x\n").repeated(8 << 20);
        LineSplitter splitter;
        QElapsedTimer elapsed;
        elapsed.start();
        splitter.append(chunk);
        int count = 0;
        while (splitter.next()) {
            ++count;
        }
        QCOMPARE(count, 8 << 20);
        QVERIFY2(elapsed.elapsed() < 10'000, qPrintable(QString::number(elapsed.elapsed())));
    }
};

QTEST_APPLESS_MAIN(TestLineSplitter)
#include "tst_line_splitter.moc"
