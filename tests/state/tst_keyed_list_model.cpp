#include "KeyedListModel.h"

#include <QAbstractItemModelTester>
#include <QTest>

#include <random>

using namespace ostra;

namespace {

struct Item {
    QString key;
    int value = 0;
    int weight = 0;
    bool operator==(const Item &) const = default;
};

struct ItemTraits {
    enum Role { KeyRole = Qt::UserRole, ValueRole, WeightRole };

    static QHash<int, QByteArray> roleNames()
    {
        return {{KeyRole, "key"}, {ValueRole, "value"}, {WeightRole, "weight"}};
    }
    static const QString &key(const Item &item) { return item.key; }
    static QVariant data(const Item &item, int role)
    {
        switch (role) {
        case KeyRole:
            return item.key;
        case ValueRole:
            return item.value;
        case WeightRole:
            return item.weight;
        default:
            return {};
        }
    }
    static QList<int> changedRoles(const Item &before, const Item &after)
    {
        QList<int> roles;
        if (before.value != after.value) {
            roles.append(ValueRole);
        }
        if (before.weight != after.weight) {
            roles.append(WeightRole);
        }
        return roles;
    }
};

using ItemModel = KeyedListModel<Item, ItemTraits>;

/// "a1 b2": the rows a and b with the values 1 and 2.
QList<Item> items(const QString &text)
{
    QList<Item> items;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts)) {
        items.append({word.left(1), word.mid(1).toInt()});
    }
    return items;
}

/// What a view hears, in words; and a copy of the list that is kept by nothing else.
class Listener : public QObject {
public:
    explicit Listener(ItemModel &model) : m_model(model), m_copy(model.rows())
    {
        connect(&model, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex &, int first, int last) {
                    heard += QStringLiteral("remove %1-%2").arg(first).arg(last);
                    m_copy.remove(first, last - first + 1);
                });
        connect(&model, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex &, int first, int last) {
                    heard += QStringLiteral("insert %1-%2").arg(first).arg(last);
                    for (int row = first; row <= last; ++row) {
                        m_copy.insert(row, m_model.rows().at(row));
                    }
                });
        connect(&model, &QAbstractItemModel::rowsMoved, this,
                [this](const QModelIndex &, int from, int, const QModelIndex &, int before) {
                    const int to = from < before ? before - 1 : before;
                    heard += QStringLiteral("move %1>%2").arg(from).arg(to);
                    ++moves;
                    m_copy.move(from, to);
                });
        connect(&model, &QAbstractItemModel::dataChanged, this,
                [this](const QModelIndex &first, const QModelIndex &last, const QList<int> &roles) {
                    QStringList names;
                    for (const int role : roles) {
                        names += QString::fromLatin1(ItemTraits::roleNames().value(role));
                    }
                    heard += QStringLiteral("change %1 %2").arg(first.row()).arg(names.join(u'+'));
                    QCOMPARE(first.row(), last.row());
                    m_copy[first.row()] = m_model.rows().at(first.row());
                });
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this,
                [this] { heard += QStringLiteral("reset"); });
        connect(&model, &QAbstractItemModel::layoutAboutToBeChanged, this,
                [this] { heard += QStringLiteral("layout"); });
    }

    const QList<Item> &copy() const { return m_copy; }
    QStringList heard;
    int moves = 0;

private:
    ItemModel &m_model;
    QList<Item> m_copy;
};

/// The length of a longest increasing subsequence, by trying all of them.
int longestIncreasing(const QList<int> &numbers)
{
    int best = 0;
    for (unsigned chosen = 0; chosen < (1U << numbers.size()); ++chosen) {
        int last = -1;
        int length = 0;
        for (qsizetype i = 0; i < numbers.size(); ++i) {
            if (chosen & (1U << i)) {
                length = numbers.at(i) > last ? length + 1 : -1000;
                last = numbers.at(i);
            }
        }
        best = std::max(best, length);
    }
    return best;
}

} // namespace

class KeyedListModelTest : public QObject {
    Q_OBJECT

private slots:
    void turnsANewListIntoOperations_data();
    void turnsANewListIntoOperations();
    void bringsEveryListToEveryOther();
    void announcesOnlyTheRolesThatChanged();
    void replacesOneRowInPlace();
    void findsRowsByKeyAlsoInTheMiddleOfAChange();
    void holdsTheListItWasGivenWithoutCopyingIt();
    void knowsItsRoles();
};

void KeyedListModelTest::turnsANewListIntoOperations_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QStringList>("operations");

    const auto row = [](const char *name, const char *before, const char *after,
                        const QStringList &operations) {
        QTest::newRow(name) << QString::fromLatin1(before) << QString::fromLatin1(after)
                            << operations;
    };
    row("nothing to nothing", "", "", {});
    row("the same", "a b c", "a b c", {});
    row("first rows", "", "a b c", {QStringLiteral("insert 0-2")});
    row("all rows gone", "a b c", "", {QStringLiteral("remove 0-2")});
    row("appended", "a b", "a b c d", {QStringLiteral("insert 2-3")});
    row("prepended", "c d", "a b c d", {QStringLiteral("insert 0-1")});
    row("inserted between", "a d", "a b c d", {QStringLiteral("insert 1-2")});
    row("inserted in two places", "b d", "a b c d",
        {QStringLiteral("insert 1-1"), QStringLiteral("insert 0-0")});
    row("removed between", "a b c d", "a d", {QStringLiteral("remove 1-2")});
    row("removed in two places", "a b c d", "b d",
        {QStringLiteral("remove 2-2"), QStringLiteral("remove 0-0")});
    row("the first to the end", "a b c d", "b c d a", {QStringLiteral("move 0>3")});
    row("the last to the front", "a b c d", "d a b c", {QStringLiteral("move 3>0")});
    row("two exchanged", "a b", "b a", {QStringLiteral("move 0>1")});
    row("turned round", "a b c", "c b a", {QStringLiteral("move 0>2"), QStringLiteral("move 0>1")});
    row("replaced", "a b c", "x y", {QStringLiteral("remove 0-2"), QStringLiteral("insert 0-1")});
    row("removed, moved and inserted", "a b c d", "d x b a",
        {QStringLiteral("remove 2-2"), QStringLiteral("move 0>2"), QStringLiteral("move 0>1"),
         QStringLiteral("insert 1-1")});
    row("one changed", "a1 b2 c3", "a1 b5 c3", {QStringLiteral("change 1 value")});
    row("moved and changed", "a1 b2", "b2 a3",
        {QStringLiteral("move 0>1"), QStringLiteral("change 1 value")});
    row("a repeated key counts once", "", "a1 b2 a3", {QStringLiteral("insert 0-1")});
    row("a repeated key keeps the first value", "a1 b2", "a1 a9 b2", {});
}

void KeyedListModelTest::turnsANewListIntoOperations()
{
    QFETCH(const QString, before);
    QFETCH(const QString, after);
    QFETCH(const QStringList, operations);

    ItemModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setRows(items(before));
    const Listener listener(model);
    model.setRows(items(after));

    QCOMPARE(listener.heard, operations);
    QCOMPARE(listener.copy(), model.rows());
}

void KeyedListModelTest::bringsEveryListToEveryOther()
{
    const auto seed = qEnvironmentVariableIsSet("OSTRA_SEED")
                          ? static_cast<unsigned>(qEnvironmentVariableIntValue("OSTRA_SEED"))
                          : std::random_device{}();
    qInfo("OSTRA_SEED=%u", seed);
    std::mt19937 random(seed);
    const auto pick = [&random](int below) {
        return std::uniform_int_distribution<int>(0, below - 1)(random);
    };
    const auto randomList = [&] {
        QString keys = QStringLiteral("abcdefghij");
        std::shuffle(keys.begin(), keys.end(), random);
        QList<Item> list;
        for (const QChar key : keys.left(pick(11))) {
            list.append({key, pick(2)});
        }
        return list;
    };

    ItemModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (int round = 0; round < 2000; ++round) {
        const QList<Item> before = model.rows();
        const QList<Item> after = randomList();
        const Listener listener(model);
        model.setRows(after);

        QCOMPARE(model.rows(), after);
        QCOMPARE(listener.copy(), after);
        QList<int> targets;
        for (const Item &item : before) {
            const int target = model.indexOf(item.key);
            if (target >= 0) {
                targets.append(target);
            }
        }
        QCOMPARE(listener.moves, targets.size() - longestIncreasing(targets));
    }
}

void KeyedListModelTest::announcesOnlyTheRolesThatChanged()
{
    ItemModel model;
    model.setRows({{QStringLiteral("a"), 1, 1}, {QStringLiteral("b"), 1, 1}});
    const Listener listener(model);
    model.setRows({{QStringLiteral("a"), 1, 2}, {QStringLiteral("b"), 3, 4}});
    QCOMPARE(listener.heard, QStringList({QStringLiteral("change 0 weight"),
                                          QStringLiteral("change 1 value+weight")}));
}

void KeyedListModelTest::replacesOneRowInPlace()
{
    ItemModel model;
    model.setRows(items(QStringLiteral("a1 b2")));
    const Listener listener(model);
    model.setRow(1, {QStringLiteral("b"), 7});
    model.setRow(1, {QStringLiteral("b"), 7});
    QCOMPARE(listener.heard, QStringList({QStringLiteral("change 1 value")}));
    QCOMPARE(model.rows(), items(QStringLiteral("a1 b7")));
}

void KeyedListModelTest::findsRowsByKeyAlsoInTheMiddleOfAChange()
{
    ItemModel model;
    model.setRows(items(QStringLiteral("a b c")));
    QCOMPARE(model.indexOf(QStringLiteral("c")), 2);
    QCOMPARE(model.indexOf(QStringLiteral("x")), -1);

    QList<int> found;
    connect(&model, &QAbstractItemModel::rowsRemoved, &model,
            [&] { found.append(model.indexOf(QStringLiteral("c"))); });
    connect(&model, &QAbstractItemModel::rowsInserted, &model,
            [&] { found.append(model.indexOf(QStringLiteral("c"))); });
    model.setRows(items(QStringLiteral("x b c")));
    QCOMPARE(found, QList<int>({1, 2}));
}

void KeyedListModelTest::holdsTheListItWasGivenWithoutCopyingIt()
{
    ItemModel model;
    const QList<Item> given = items(QStringLiteral("a b c"));
    model.setRows(given);
    QCOMPARE(model.rows().constData(), given.constData());
}

void KeyedListModelTest::knowsItsRoles()
{
    ItemModel model;
    model.setRows(items(QStringLiteral("a4")));
    QCOMPARE(model.roleNames().value(ItemTraits::ValueRole), QByteArray("value"));
    QCOMPARE(model.data(model.index(0), ItemTraits::ValueRole), QVariant(4));
    QCOMPARE(model.data(QModelIndex(), ItemTraits::ValueRole), QVariant());
    QCOMPARE(model.rowCount(model.index(0)), 0);
}

QTEST_GUILESS_MAIN(KeyedListModelTest)
#include "tst_keyed_list_model.moc"
