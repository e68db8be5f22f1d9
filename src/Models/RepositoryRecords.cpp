#include "Models/RepositoryRecords.h"

#include "Models/RepositoryMembers.h"

namespace ostra {

const SongGraph SongGraph::empty{};

Decoded<SongGraph> decodeSongGraph(QByteArrayView json)
{
    return json::decode<SongGraph>(json, std::tuple{
                                             json::required("nodes", &SongGraph::nodes),
                                             json::required("lanes", &SongGraph::lanes),
                                             json::required("current", &SongGraph::current),
                                         });
}

} // namespace ostra
