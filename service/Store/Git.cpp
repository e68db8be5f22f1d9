#include "Store/Git.h"

#include <array>

namespace ostra {

namespace {

// Large enough for the commits of the songs somebody looks at, small enough for an idle service.
constexpr ssize_t kObjectCacheBytes = 2LL * 1024 * 1024;
constexpr size_t kMappedPackBytes = 64ULL * 1024 * 1024;

} // namespace

void checkEveryHash(bool isWanted)
{
    git_libgit2_opts(GIT_OPT_ENABLE_STRICT_HASH_VERIFICATION, isWanted ? 1 : 0);
}

void startGit()
{
    static const bool once = [] {
        git_libgit2_init();
        git_libgit2_opts(GIT_OPT_ENABLE_FSYNC_GITDIR, 1);
        git_libgit2_opts(GIT_OPT_SET_CACHE_MAX_SIZE, kObjectCacheBytes);
        git_libgit2_opts(GIT_OPT_SET_MWINDOW_MAPPED_LIMIT, kMappedPackBytes);
        // Each object has a checksum of its own; hashing it anew takes longer than reading it.
        checkEveryHash(false);
        // A project on an external drive may belong to another user id.
        git_libgit2_opts(GIT_OPT_SET_OWNER_VALIDATION, 0);
        for (const auto level : {GIT_CONFIG_LEVEL_PROGRAMDATA, GIT_CONFIG_LEVEL_SYSTEM,
                                 GIT_CONFIG_LEVEL_XDG, GIT_CONFIG_LEVEL_GLOBAL}) {
            git_libgit2_opts(GIT_OPT_SET_SEARCH_PATH, level, "");
        }
        return true;
    }();
    (void)once;
}

tl::unexpected<Failure> gitFailure(const QString &what)
{
    const git_error *error = git_error_last();
    return failure(error && error->message
                       ? what + QStringLiteral(": ") + QString::fromUtf8(error->message)
                       : what);
}

} // namespace ostra
