#include "Views/MergePanelModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

void toggle(QSet<QString> &set, const QString &id)
{
    if (!set.remove(id)) {
        set.insert(id);
    }
}

bool isSide(const QString &side)
{
    return side == MergeSide::from || side == MergeSide::into;
}

} // namespace

QString mergedLine(qint64 files)
{
    return QString::number(files) + u" file(s) merged"_s;
}

QString leftOutLine(const QStringList &skipped)
{
    return skipped.isEmpty() ? QString() : u"left out: "_s + skipped.join(u", "_s);
}

QString conflictsLine(const MergeResult &merge)
{
    const qsizetype count = merge.conflicts.size();
    const QString left =
        QString::number(count) + (count == 1 ? u" conflict left"_s : u" conflicts left"_s);
    return merge.autoMerged > 0 ? mergedLine(merge.autoMerged) + u" · "_s + left : left;
}

MergePanelState outcomeOf(const DaemonClient::Result<IPCResponse> &reply)
{
    if (!reply) {
        return MergePanelCase::Error{DaemonClient::description(reply.error())};
    }
    if (const auto *merge = std::get_if<MergeResult>(&*reply)) {
        return merge->conflicts.isEmpty() ? MergePanelState(MergePanelCase::Summary{*merge})
                                          : MergePanelCase::Result{*merge};
    }
    if (const auto *pending = std::get_if<PendingMergeState>(&*reply)) {
        return MergePanelCase::Result{{pending->conflicts, 0, {}, pending->reason}};
    }
    if (const auto *error = std::get_if<Reply::Error>(&*reply)) {
        return MergePanelCase::Error{error->message};
    }
    return MergePanelCase::Error{DaemonClient::description(DaemonClient::MergeError{})};
}

MergePanelModel::MergePanelModel(QObject *parent) : QObject(parent) {}

MergePanelModel::~MergePanelModel() = default;

// The song and its variations.

void MergePanelModel::setDaemon(DaemonState *daemon)
{
    if (daemon == m_daemon) {
        return;
    }
    if (m_daemon) {
        m_daemon->disconnect(this);
    }
    m_daemon = daemon;
    watchDaemon();
    changeSong();
    emit daemonChanged();
}

void MergePanelModel::setRepoName(const QString &repoName)
{
    if (repoName != m_repoName) {
        m_repoName = repoName;
        changeSong();
    }
}

void MergePanelModel::setSong(const QString &song)
{
    if (song != m_song) {
        m_song = song;
        changeSong();
    }
}

void MergePanelModel::watchDaemon()
{
    if (!m_daemon) {
        return;
    }
    connect(m_daemon, &DaemonState::reposChanged, this, &MergePanelModel::lookAtSong);
    connect(m_daemon, &DaemonState::connectionStateChanged, this, &MergePanelModel::lookAtSong);
}

void MergePanelModel::changeSong()
{
    ++m_songGeneration;
    m_knownSong.reset();
    m_selections.expandedTickGroups.clear();
    setSelectedFrom({});
    startOver();
    setVariations(storedVariations());
    scheduleFetch();
    emit songChanged();
}

/// What the store already knows stands in until the service has answered.
QList<BranchInfo> MergePanelModel::storedVariations() const
{
    QList<BranchInfo> variations;
    const auto song = m_daemon ? m_daemon->song(m_repoName, m_song) : std::nullopt;
    if (song) {
        for (const VariationInfo &variation : song->variations) {
            variations.append({variation.name, variation.isCurrent, {}});
        }
    }
    return variations;
}

void MergePanelModel::lookAtSong()
{
    if (m_daemon->connectionState() != DaemonState::ConnectionState::connected) {
        return;
    }
    const std::optional<FileState> song = m_daemon->song(m_repoName, m_song);
    if (song && m_knownSong != KnownSong{song->branch, song->variations}) {
        scheduleFetch();
    }
}

/// Once per turn of the event loop: a panel sets its project, song and store one by one.
void MergePanelModel::scheduleFetch()
{
    if (m_fetchScheduled || !m_daemon || m_repoName.isEmpty() || m_song.isEmpty()) {
        return;
    }
    m_fetchScheduled = true;
    QMetaObject::invokeMethod(
        this, [this] { fetchVariations(); }, Qt::QueuedConnection);
}

QCoro::Task<> MergePanelModel::fetchVariations()
{
    m_fetchScheduled = false;
    if (!m_daemon) {
        co_return;
    }
    const QPointer self(this);
    const quint64 generation = m_songGeneration;
    if (const std::optional<FileState> song = m_daemon->song(m_repoName, m_song)) {
        m_knownSong = KnownSong{song->branch, song->variations};
    }
    auto variations = co_await m_daemon->tryFetchVariations(m_repoName, m_song);
    if (!self || generation != m_songGeneration) {
        co_return;
    }
    if (variations) {
        setVariations(std::move(*variations));
    } else {
        m_knownSong.reset();
    }
}

void MergePanelModel::setVariations(QList<BranchInfo> variations)
{
    if (variations == m_variations) {
        return;
    }
    m_variations = std::move(variations);
    emit variationsChanged();
    if (!m_selectedFrom.isEmpty() && !otherVariations().contains(m_selectedFrom)) {
        setSelectedFrom({});
    }
    const bool isDeciding = panelCase() == Planning || panelCase() == Review;
    if (isDeciding && currentVariation() != m_into) {
        startOver();
    }
}

QString MergePanelModel::currentVariation() const
{
    const auto current = std::ranges::find_if(m_variations, &BranchInfo::isCurrent);
    return current == m_variations.cend() ? QString() : current->name;
}

QStringList MergePanelModel::otherVariations() const
{
    QStringList names;
    for (const BranchInfo &variation : m_variations) {
        if (!variation.isCurrent) {
            names << variation.name;
        }
    }
    return names;
}

void MergePanelModel::setSelectedFrom(const QString &variation)
{
    if (variation == m_selectedFrom) {
        return;
    }
    m_selectedFrom = variation;
    emit selectedFromChanged();
    if (panelCase() == Planning || panelCase() == Review || panelCase() == Merging) {
        startOver();
    }
}

// Planning and deciding.

void MergePanelModel::runMerge()
{
    if (m_selectedFrom.isEmpty() || !m_daemon || m_applyInFlight) {
        return;
    }
    ++m_generation;
    m_mergeVersionName.clear();
    m_mergeVersionNamed = false;
    m_naming = false;
    emit mergeVersionChanged();
    m_unreviewed.clear();
    m_from = m_selectedFrom;
    m_into = currentVariation();
    setPanelState(MergePanelCase::Planning{});
    fetchPlan();
}

QCoro::Task<> MergePanelModel::fetchPlan()
{
    const QPointer self(this);
    const quint64 generation = m_generation;
    const auto plan = co_await m_daemon->fetchMergePlan(m_repoName, m_song, m_from, m_into);
    if (!self || generation != m_generation) {
        co_return;
    }
    if (!plan) {
        setPanelState(MergePanelCase::Error{u"Couldn't plan this merge."_s});
    } else if (plan->clean) {
        m_unreviewed = changeGroups(autoChanges(*plan));
        m_selections.expandedAutoGroups.clear();
        sendApply(plan->fingerprint, autoApprovedIds(*plan), {}, {});
    } else {
        beginReview(*plan);
    }
}

void MergePanelModel::beginReview(const MergePlanResult &plan)
{
    m_selections.tickedIds.clear();
    m_selections.pickChoices.clear();
    m_selections.fallbackChoices.clear();
    for (const MergePlanFallbackDTO &fallback : plan.fallbacks) {
        m_selections.fallbackChoices.insert(fallback.keyId, MergeSide::into);
    }
    m_selections.expandedAutoGroups.clear();
    m_selections.expandedPickGroups.clear();
    m_review = MergeReview(plan);
    m_from = m_selectedFrom;
    m_into = currentVariation();
    setPanelState(MergePanelCase::Review{plan});
    emit selectionsChanged();
}

void MergePanelModel::toggleTick(const QString &id)
{
    toggle(m_selections.tickedIds, id);
    updateSelections();
}

void MergePanelModel::tickAll(const QString &groupId)
{
    const auto group = std::ranges::find(m_review.tickGroups, groupId, &ChangeGroup::id);
    if (group == m_review.tickGroups.cend()) {
        return;
    }
    QSet<QString> &ticked = m_selections.tickedIds;
    const bool areAllTicked = std::ranges::all_of(
        group->items, [&](const MergePlanChangeDTO &change) { return ticked.contains(change.id); });
    for (const MergePlanChangeDTO &change : group->items) {
        if (areAllTicked) {
            ticked.remove(change.id);
        } else {
            ticked.insert(change.id);
        }
    }
    updateSelections();
}

void MergePanelModel::choosePick(const QString &keyId, const QString &side)
{
    if (isSide(side)) {
        m_selections.pickChoices.insert(keyId, side);
        updateSelections();
    }
}

void MergePanelModel::choosePicks(const QString &groupId, const QString &side)
{
    const auto group = std::ranges::find(m_review.pickGroups, groupId, &PickGroup::id);
    if (group == m_review.pickGroups.cend() || !isSide(side)) {
        return;
    }
    for (const MergePlanPickDTO &pick : group->picks) {
        m_selections.pickChoices.insert(pick.keyId, side);
    }
    updateSelections();
}

void MergePanelModel::chooseFallback(const QString &keyId, const QString &side)
{
    if (isSide(side)) {
        m_selections.fallbackChoices.insert(keyId, side);
        updateSelections();
    }
}

void MergePanelModel::toggleAutoGroup(const QString &groupId)
{
    toggle(m_selections.expandedAutoGroups, groupId);
    updateRows();
}

void MergePanelModel::toggleTickGroup(const QString &groupId)
{
    toggle(m_selections.expandedTickGroups, groupId);
    updateRows();
}

void MergePanelModel::togglePickGroup(const QString &groupId)
{
    toggle(m_selections.expandedPickGroups, groupId);
    updateRows();
}

bool MergePanelModel::canApply() const
{
    const auto *review = std::get_if<MergePanelCase::Review>(&m_panelState);
    return review && std::ranges::all_of(review->plan.picks, [this](const MergePlanPickDTO &pick) {
               return m_selections.pickChoices.contains(pick.keyId);
           });
}

// Applying.

void MergePanelModel::apply()
{
    if (canApply()) {
        applyReview(std::get<MergePanelCase::Review>(m_panelState).plan);
    }
}

void MergePanelModel::applyReview(const MergePlanResult &plan)
{
    QStringList approvedIds = autoApprovedIds(plan);
    for (const MergePlanChangeDTO &change : reviewableChanges(plan)) {
        if (m_selections.tickedIds.contains(change.id)) {
            approvedIds << change.id;
        }
    }
    approvedIds.removeDuplicates();
    QList<IPCMergeKeySide> picks;
    for (const MergePlanPickDTO &pick : plan.picks) {
        if (const auto choice = m_selections.pickChoices.constFind(pick.keyId);
            choice != m_selections.pickChoices.cend()) {
            picks.append({pick.keyId, *choice});
        }
    }
    QList<IPCMergeKeySide> fallbackSides;
    for (const MergePlanFallbackDTO &fallback : plan.fallbacks) {
        fallbackSides.append(
            {fallback.keyId, m_selections.fallbackChoices.value(fallback.keyId, MergeSide::into)});
    }
    sendApply(plan.fingerprint, approvedIds, picks, fallbackSides);
}

void MergePanelModel::sendApply(const std::optional<QString> &fingerprint,
                                const QStringList &approvedIds, const QList<IPCMergeKeySide> &picks,
                                const QList<IPCMergeKeySide> &fallbackSides)
{
    if (!m_daemon) {
        return;
    }
    IPCCommand command;
    command.cmd = u"merge_apply"_s;
    command.repo = m_repoName;
    command.path = m_daemon->repoPath(m_repoName);
    command.file = m_song;
    command.from = m_selectedFrom;
    command.into = currentVariation();
    command.approved_ids = approvedIds;
    command.picks = picks;
    command.fallback_sides = fallbackSides;
    command.fingerprint = fingerprint;
    setPanelState(MergePanelCase::Merging{});
    setApplyInFlight(true);
    send(std::move(command));
}

QCoro::Task<> MergePanelModel::send(IPCCommand command)
{
    const QPointer self(this);
    const QPointer daemon = m_daemon;
    const quint64 generation = m_generation;
    const auto reply = co_await daemon->client().send(std::move(command));
    if (self && generation == m_generation) {
        m_conflicts = {};
        setApplyInFlight(false);
        setPanelState(outcomeOf(reply));
        if (self && shownResult()) {
            emit merged();
        }
    }
    // The set on disk may have changed, whoever still looks at the outcome.
    if (daemon) {
        co_await daemon->refreshAll();
    }
}

// What came of it.

void MergePanelModel::resetToIdle()
{
    startOver();
}

void MergePanelModel::startOver()
{
    ++m_generation;
    setApplyInFlight(false);
    setPanelState(MergePanelCase::Idle{});
}

void MergePanelModel::setMergeVersionName(const QString &name)
{
    if (name != m_mergeVersionName) {
        m_mergeVersionName = name;
        emit mergeVersionChanged();
    }
}

void MergePanelModel::nameMergeVersion()
{
    const QString name = m_mergeVersionName.trimmed();
    if (name.isEmpty() || m_naming || !m_daemon) {
        return;
    }
    m_naming = true;
    IPCCommand command;
    command.cmd = u"song_version_create"_s;
    command.repo = m_repoName;
    command.name = name;
    command.file = m_song;
    sendVersion(std::move(command));
}

QCoro::Task<> MergePanelModel::sendVersion(IPCCommand command)
{
    const QPointer self(this);
    const QPointer daemon = m_daemon;
    const quint64 generation = m_generation;
    const QString label = u"Name version"_s;
    // The store reports a failure through its one error text, which a later action may clear.
    const auto failed = std::make_shared<bool>(false);
    const auto watch = connect(daemon, &DaemonState::lastActionErrorChanged, daemon, [=] {
        *failed = *failed || (daemon && daemon->lastActionErrorText().startsWith(label));
    });
    co_await daemon->perform(std::move(command), label, DaemonState::Refresh::yes);
    QObject::disconnect(watch);
    if (self && generation == m_generation) {
        m_naming = false;
        m_mergeVersionNamed = !*failed;
        emit mergeVersionChanged();
    }
}

void MergePanelModel::takeConflict(const QString &conflictId)
{
    resolve(conflictId, u"TakeLeft"_s);
}

void MergePanelModel::keepConflict(const QString &conflictId)
{
    resolve(conflictId, u"TakeRight"_s);
}

void MergePanelModel::resolve(const QString &conflictId, const QString &choice)
{
    const auto *result = std::get_if<MergePanelCase::Result>(&m_panelState);
    if (!result || !m_daemon || m_conflicts.resolving.contains(conflictId)) {
        return;
    }
    const auto conflict =
        std::ranges::find(result->merge.conflicts, conflictId, &MergeConflictDTO::id);
    if (conflict == result->merge.conflicts.cend()) {
        return;
    }
    IPCCommand command;
    command.cmd = u"resolve"_s;
    command.repo = m_repoName;
    command.path = m_daemon->repoPath(m_repoName);
    command.conflict_id = conflictId;
    command.choice = choice;
    m_conflicts.resolving.insert(conflictId);
    m_conflicts.errors.remove(conflictId);
    sendResolve(*conflict, std::move(command));
    updateRows();
}

QCoro::Task<> MergePanelModel::sendResolve(MergeConflictDTO conflict, IPCCommand command)
{
    const QPointer self(this);
    const QPointer daemon = m_daemon;
    const quint64 generation = m_generation;
    const auto reply = co_await daemon->client().send(std::move(command));
    const auto *refusal = reply ? std::get_if<Reply::Error>(&*reply) : nullptr;
    if (self && generation == m_generation) {
        m_conflicts.resolving.remove(conflict.id);
        const MergeResult *current = shownResult();
        if (!reply) {
            m_conflicts.errors.insert(conflict.id, DaemonClient::description(reply.error()));
        } else if (refusal) {
            m_conflicts.errors.insert(conflict.id, refusal->message);
        } else if (current) {
            rerenderAfterResolve(conflict, *current);
        }
        updateRows();
    }
    if (daemon && reply && !refusal) {
        co_await daemon->refreshAll();
    }
}

void MergePanelModel::rerenderAfterResolve(const MergeConflictDTO &conflict,
                                           const MergeResult &current)
{
    MergeResult rest = current;
    rest.conflicts.removeOne(conflict);
    if (rest.conflicts.isEmpty()) {
        setPanelState(MergePanelCase::Summary{rest});
    } else {
        setPanelState(MergePanelCase::Result{rest});
    }
}

const MergeResult *MergePanelModel::shownResult() const
{
    if (const auto *summary = std::get_if<MergePanelCase::Summary>(&m_panelState)) {
        return &summary->merge;
    }
    const auto *result = std::get_if<MergePanelCase::Result>(&m_panelState);
    return result ? &result->merge : nullptr;
}

// Texts.

QString MergePanelModel::title() const
{
    return u"MERGE INTO "_s + currentVariation();
}

QString MergePanelModel::loadingText() const
{
    switch (panelCase()) {
    case Planning:
        return u"planning…"_s;
    case Merging:
        return u"merging…"_s;
    default:
        return {};
    }
}

QString MergePanelModel::message() const
{
    const auto *error = std::get_if<MergePanelCase::Error>(&m_panelState);
    return error ? error->message : QString();
}

QString MergePanelModel::resultLine() const
{
    switch (panelCase()) {
    case Summary:
        return mergedLine(shownResult()->autoMerged);
    case Result:
        return conflictsLine(*shownResult());
    default:
        return {};
    }
}

QString MergePanelModel::savedOntoLine() const
{
    return u"saved onto "_s + m_into;
}

QString MergePanelModel::leftOutLine() const
{
    const MergeResult *merge = shownResult();
    return merge ? ostra::leftOutLine(merge->skipped) : QString();
}

QString MergePanelModel::reasonLine() const
{
    const MergeResult *merge = shownResult();
    return merge ? merge->degradeReason.value_or(QString()) : QString();
}

// Change.

void MergePanelModel::setPanelState(MergePanelState state)
{
    if (state == m_panelState) {
        return;
    }
    const Case before = panelCase();
    m_panelState = std::move(state);
    updateRows();
    emit panelStateChanged();
    emit selectionsChanged();
    if (panelCase() != before) {
        emit panelCaseChanged();
    }
}

void MergePanelModel::setApplyInFlight(bool inFlight)
{
    if (inFlight != m_applyInFlight) {
        m_applyInFlight = inFlight;
        emit applyInFlightChanged();
    }
}

void MergePanelModel::updateSelections()
{
    updateRows();
    emit selectionsChanged();
}

void MergePanelModel::updateRows()
{
    const int before = m_rows.height();
    m_rows.setRows(currentRows());
    if (m_rows.height() != before) {
        emit rowsHeightChanged();
    }
}

QList<MergePanelRow> MergePanelModel::currentRows() const
{
    switch (panelCase()) {
    case Review:
        return reviewRows(m_review, m_selections, m_into, m_from);
    case Summary:
        return autoRows(m_unreviewed, m_selections.expandedAutoGroups);
    case Result:
        break;
    default:
        return {};
    }
    QList<MergeRow::ConflictRow> rows;
    for (const MergeConflictDTO &conflict : shownResult()->conflicts) {
        const auto error = m_conflicts.errors.constFind(conflict.id);
        rows.append({conflict,
                     {conflict.trackId},
                     m_repoName,
                     m_from,
                     m_into,
                     m_conflicts.resolving.contains(conflict.id),
                     error == m_conflicts.errors.cend() ? std::nullopt : std::optional(*error)});
    }
    return conflictRows(rows);
}

} // namespace ostra
