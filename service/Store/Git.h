#pragma once

#include "Store/Failure.h"
#include "Store/ObjectId.h"

#include <git2.h>

#include <memory>

/// The seam to libgit2: owning handles and error texts. Included by sources of this room only.
namespace ostra {

template <auto Free>
struct GitDeleter {
    template <typename T>
    void operator()(T *object) const
    {
        Free(object);
    }
};

using GitRepository = std::unique_ptr<git_repository, GitDeleter<git_repository_free>>;
using GitOdb = std::unique_ptr<git_odb, GitDeleter<git_odb_free>>;
using GitOdbObject = std::unique_ptr<git_odb_object, GitDeleter<git_odb_object_free>>;
using GitReference = std::unique_ptr<git_reference, GitDeleter<git_reference_free>>;
using GitReferenceIterator =
    std::unique_ptr<git_reference_iterator, GitDeleter<git_reference_iterator_free>>;
using GitTag = std::unique_ptr<git_tag, GitDeleter<git_tag_free>>;
using GitTree = std::unique_ptr<git_tree, GitDeleter<git_tree_free>>;
using GitConfig = std::unique_ptr<git_config, GitDeleter<git_config_free>>;
using GitPackBuilder = std::unique_ptr<git_packbuilder, GitDeleter<git_packbuilder_free>>;

/// Prepares libgit2 once per process: durable writes, small caches, no configuration from outside.
void startGit();

/// Whether reading an object compares it with its name, in the whole process.
void checkEveryHash(bool isWanted);

/// "<what>: <libgit2's last words>"
tl::unexpected<Failure> gitFailure(const QString &what);

inline git_oid toGit(const ObjectId &id)
{
    git_oid oid;
    git_oid_fromraw(&oid, id.bytes.data());
    return oid;
}

inline ObjectId fromGit(const git_oid &oid)
{
    ObjectId id;
    std::memcpy(id.bytes.data(), oid.id, id.bytes.size());
    return id;
}

} // namespace ostra
