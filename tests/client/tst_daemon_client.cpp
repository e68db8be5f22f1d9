#include "ClientFixture.h"
#include "Mailbox.h"

#include <QThread>

#include <future>

using namespace ostra;
using namespace Qt::StringLiterals;

/// What goes over a connection that works.
class TestDaemonClient : public ClientFixture {
    Q_OBJECT

private slots:
    void connectsAndAnswersOneRequest()
    {
        QVERIFY(!client->isConnected());
        QVERIFY(connect());
        QVERIFY(client->isConnected());
        QCOMPARE(stateChanges(), QList<bool>{true});
        const Answered reply = send("ok").wait();
        QVERIFY2(reply, qPrintable(errorText(reply)));
        QVERIFY(*reply == IPCResponse(Reply::Ok{}));
        QCOMPARE(service->lines(), QByteArrayList{R"({"cmd":"ok"})"});
    }

    void anErrorReplyIsAReply()
    {
        service->answer(u"refused"_s, Answer::error(u"no such song"_s));
        QVERIFY(connect());
        QVERIFY(*send("refused").wait() == IPCResponse(Reply::Error{u"no such song"_s}));
    }

    void aFramedRequestIsOneLine()
    {
        QVERIFY(connect());
        IPCCommand rename = command("ok");
        rename.to = u"a\nb\"é"_s;
        QVERIFY(Outcome(client->send(rename)).wait());
        QCOMPARE(service->lines(), QByteArrayList{"{\"cmd\":\"ok\",\"to\":\"a\\nb\\\"é\"}"});
    }

    void twoRequestsAreAnsweredInOrderFromOneChunk()
    {
        service->answer(u"second"_s,
                        Answer{.bytes = "{\"type\":\"song_deleted\",\"file\":\"1\"}\n"
                                        "{\"type\":\"song_deleted\",\"file\":\"2\"}\n"});
        QVERIFY(connect());
        auto first = send("silence");
        auto second = send("second");
        QVERIFY(*second.wait() == IPCResponse(Reply::SongDeleted{u"2"_s}));
        QVERIFY(first.isReady());
        QVERIFY(*first.value() == IPCResponse(Reply::SongDeleted{u"1"_s}));
    }

    void aReplyInPiecesIsPutTogether_data()
    {
        QTest::addColumn<int>("pieceSize");
        for (const int size : {1, 2, 3, 7, 64}) {
            QTest::addRow("%d", size) << size;
        }
    }
    void aReplyInPiecesIsPutTogether()
    {
        QFETCH(int, pieceSize);
        service->answer(u"pieces"_s,
                        Answer{.bytes = "{\"type\":\"song_deleted\",\"file\":\"Été 🎹.als\"}\n",
                               .pieceSize = pieceSize});
        QVERIFY(connect());
        QVERIFY(*send("pieces").wait() == IPCResponse(Reply::SongDeleted{u"Été 🎹.als"_s}));
    }

    void songsThatAreAsTheyWereAreTheListThatTheyWere()
    {
        const auto reply = [](const QByteArray &song) {
            return Answer::line(
                R"({"type":"status","repos":[{"name":"A","path":"/A","current_branch":"main",)"
                R"("head_commit":"a","head_message":"","is_dirty":false,"file_states":)"
                R"([{"filename":")" +
                song + R"(","branch":"main"}]}]})");
        };
        service->answer(u"status"_s, reply("one.als"));
        QVERIFY(connect());
        const auto songs = [this] {
            const Answered answered = send("status").wait();
            return std::get<Reply::Status>(*answered).repos.first().fileStates;
        };
        const QList<FileState> first = songs();
        QVERIFY(songs().isSharedWith(first));
        service->answer(u"status"_s, reply("two.als"));
        const QList<FileState> changed = songs();
        QCOMPARE(changed.first().filename, u"two.als"_s);
        QCOMPARE(first.first().filename, u"one.als"_s);
        QVERIFY(songs().isSharedWith(changed));
    }

    void bytesAfterTheLastLineFeedWaitForTheNextChunk()
    {
        service->answerOnce(u"next"_s, Answer{.bytes = "{\"type\":\"ok\"}\n{\"type\":\"song_del"});
        service->answerOnce(u"next"_s, Answer{.bytes = "eted\",\"file\":\"a\"}\n"});
        QVERIFY(connect());
        QVERIFY(*send("next").wait() == IPCResponse(Reply::Ok{}));
        QVERIFY(*send("next").wait() == IPCResponse(Reply::SongDeleted{u"a"_s}));
    }

    void anEventGoesPastTheWaitingRequest()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto waiting = send("silence");
        QVERIFY(service->waitForRequests(1));
        service->push(R"({"event":"save_detected","repo":"R","commit":"c","delta_count":3})");
        QCOMPARE(Outcome(events.next()).wait(),
                 DaemonEvent(Event::SaveDetected{u"R"_s, std::nullopt, u"c"_s, 3}));
        QVERIFY(!waiting.isReady());
        service->push(R"({"type":"ok"})");
        QVERIFY(*waiting.wait() == IPCResponse(Reply::Ok{}));
    }

    void aLineWithTypeAndEventAnswersTheRequest()
    {
        service->answer(u"both"_s, Answer::line(R"({"event":"error","message":"m","type":"ok"})"));
        QVERIFY(connect());
        QVERIFY(*send("both").wait() == IPCResponse(Reply::Ok{}));
    }

    void aLineThatIsNeitherAnswersTheRequestWithAnError_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *line, const QString &error) {
            QTest::newRow(line) << QByteArray(line) << error;
        };
        row("INFO watching 3 folders", u"not valid JSON"_s);
        row("[]", u"not a JSON object"_s);
        row("{}", u"type: missing"_s);
        row(R"({"event":7})", u"type: missing"_s);
        row(R"({"event":null})", u"type: missing"_s);
        row(R"({"type":7,"event":"x"})", u"type: expected string, found integer"_s);
        row(R"({"type":"status"})", u"repos: missing"_s);
        row(R"({"type":"launchd_info","installed":1})",
            u"installed: expected boolean, found integer"_s);
    }
    void aLineThatIsNeitherAnswersTheRequestWithAnError()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, error);
        service->answer(u"garbage"_s, Answer::line(line));
        QVERIFY(connect());
        QCOMPARE(errorOf("garbage"), error);
        QVERIFY(client->isConnected());
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void aNullTypeBesideAnEventIsAnEvent()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto waiting = send("silence");
        QVERIFY(service->waitForRequests(1));
        service->push(R"({"type":null,"event":"x"})");
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Unknown{u"x"_s}));
        QVERIFY(!waiting.isReady());
    }

    void emptyAndUndecodableLinesAreDropped()
    {
        service->answer(u"noise"_s, Answer{.bytes = "\n\n\xff\xfe\n{\"type\":\"\xc3\"}\n\n"
                                                    "{\"type\":\"ok\"}\n"});
        QVERIFY(connect());
        QVERIFY(*send("noise").wait() == IPCResponse(Reply::Ok{}));
    }

    void anUnaskedReplyIsDropped()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        QCOMPARE(errorOf("ok"), kNoError);
        service->sendRaw("{\"type\":\"ok\"}\nlog line\n{\"type\":\"error\",\"message\":\"m\"}\n"
                         "{\"event\":\"x\"}\n");
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Unknown{u"x"_s}));
        service->answer(u"named"_s, Answer::line(R"({"type":"song_deleted","file":"a"})"));
        QVERIFY(*send("named").wait() == IPCResponse(Reply::SongDeleted{u"a"_s}));
    }

    void anUndecodableEventIsDropped()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        service->push(R"({"event":"save_detected","repo":"R","commit":"c"})");
        service->push(R"({"event":"error","message":"disk full"})");
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Error{u"disk full"_s}));
    }

    void eventsArriveInOrderHoweverManyWaitToBeTaken()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        QByteArray many;
        for (int i = 0; i < 5000; ++i) {
            many += "{\"event\":\"error\",\"message\":\"" + QByteArray::number(i) + "\"}\n";
        }
        service->sendRaw(many, 4096);
        for (int i = 0; i < 5000; ++i) {
            QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Error{QString::number(i)}));
        }
    }

    void eventsWithoutAStreamAreDropped()
    {
        QVERIFY(connect());
        service->push(R"({"event":"before"})");
        QCOMPARE(errorOf("ok"), kNoError);
        EventStream events = client->eventStream();
        service->push(R"({"event":"after"})");
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Unknown{u"after"_s}));
    }

    void aSecondStreamReplacesTheFirst()
    {
        QVERIFY(connect());
        EventStream first = client->eventStream();
        EventStream second = client->eventStream();
        service->push(R"({"event":"x"})");
        QCOMPARE(Outcome(second.next()).wait(), DaemonEvent(Event::Unknown{u"x"_s}));
        QVERIFY(!Outcome(first.next()).wait());
    }

    void eventsDeliveredBeforeTheEndCanStillBeTaken()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        service->push(R"({"event":"last"})");
        service->closeConnections();
        QTRY_VERIFY(!client->isConnected());
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Unknown{u"last"_s}));
        QVERIFY(!Outcome(events.next()).wait());
        QVERIFY(!Outcome(events.next()).wait());
    }

    void aStreamThatIsDroppedEndsTheWaitForItsNextEvent()
    {
        QVERIFY(connect());
        std::optional<EventStream> events = client->eventStream();
        Outcome next(events->next());
        events.reset();
        QVERIFY(!next.wait());
        service->push(R"({"event":"x"})");
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void aPendingMergeIsAskedFor()
    {
        service->answer(u"merge_pending"_s,
                        Answer::line(R"({"type":"merge_pending_state","from":"a","into":"b"})"));
        QVERIFY(connect());
        const auto state = Outcome(client->mergePending(u"Demo"_s)).wait();
        QVERIFY2(state, qPrintable(errorText(state)));
        QCOMPARE(*state, (PendingMergeState{.from = u"a"_s, .into = u"b"_s}));
        QCOMPARE(service->lines(), QByteArrayList{R"({"cmd":"merge_pending","repo":"Demo"})"});
    }

    void aMergeIsAborted()
    {
        service->answer(u"merge_abort"_s, Answer::ok());
        QVERIFY(connect());
        QCOMPARE(errorText(Outcome(client->mergeAbort(u"Demo"_s)).wait()), kNoError);
        QCOMPARE(service->lines(), QByteArrayList{R"({"cmd":"merge_abort","repo":"Demo"})"});
    }

    void mergeFailuresAreTold_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("error");
        QTest::newRow("error") << QByteArray(R"({"type":"error","message":"no merge is open"})")
                               << u"no merge is open"_s;
        QTest::newRow("another reply")
            << QByteArray(R"({"type":"tags","tags":[]})") << u"Unexpected daemon response"_s;
        QTest::newRow("an unknown reply")
            << QByteArray(R"({"type":"new"})") << u"Unexpected daemon response"_s;
        QTest::newRow("an undecodable reply")
            << QByteArray(R"({"type":"error"})") << u"message: missing"_s;
    }
    void mergeFailuresAreTold()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, error);
        service->answerAnything([reply](const QJsonObject &) { return Answer::line(reply); });
        QVERIFY(connect());
        QCOMPARE(errorText(Outcome(client->mergePending(u"Demo"_s)).wait()), error);
        QCOMPARE(errorText(Outcome(client->mergeAbort(u"Demo"_s)).wait()), error);
    }

    void mergeRequestsWhileNotConnectedFailLikeAnyOther()
    {
        QCOMPARE(errorText(Outcome(client->mergePending(u"Demo"_s)).wait()), kNotConnected);
        QCOMPARE(errorText(Outcome(client->mergeAbort(u"Demo"_s)).wait()), kNotConnected);
    }

    void anOkIsNoPendingMergeAndAStateIsNoOk()
    {
        service->answer(u"merge_pending"_s, Answer::ok());
        service->answer(u"merge_abort"_s, Answer::line(R"({"type":"merge_pending_state"})"));
        QVERIFY(connect());
        QCOMPARE(errorText(Outcome(client->mergePending(u"Demo"_s)).wait()),
                 u"Unexpected daemon response"_s);
        QCOMPARE(errorText(Outcome(client->mergeAbort(u"Demo"_s)).wait()),
                 u"Unexpected daemon response"_s);
    }

    void aReplyLargerThanEveryBufferArrivesWhole()
    {
        const QString name(8 << 20, u'é');
        service->answer(u"large"_s, Answer::line("{\"type\":\"song_deleted\",\"file\":\"" +
                                                 name.toUtf8() + "\"}"));
        QVERIFY(connect());
        QVERIFY(*send("large").wait() == IPCResponse(Reply::SongDeleted{name}));
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void aResultResumesOnTheThreadThatAsked()
    {
        QVERIFY(connect());
        QThread other;
        Mailbox there;
        there.moveToThread(&other);
        std::promise<QThread *> resumedOn;
        there.post([&] {
            client->send(command("ok")).then([&resumedOn](const Answered &) {
                resumedOn.set_value(QThread::currentThread());
            });
        });
        other.start();
        QCOMPARE(resumedOn.get_future().get(), &other);
        other.quit();
        QVERIFY(other.wait());
    }
};

QTEST_GUILESS_MAIN(TestDaemonClient)
#include "tst_daemon_client.moc"
