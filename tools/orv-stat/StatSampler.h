#ifndef ORV_STAT_STATSAMPLER_H
#define ORV_STAT_STATSAMPLER_H

#include "ElementTypes.h"
#include "StatRecords.h"

#include <Pegasus/Client/CIMClient.h>

#include <functional>
#include <string>
#include <vector>

namespace orvstat
{

/// Connects `client` to the server; over HTTPS the server's certificate is
/// verified only when `caCert` names the file of its issuer.
void connectClient(Pegasus::CIMClient& client, const ServerAddress& server, const std::string& user,
                   const std::string& password, const std::string& caCert);

/// Takes samples of block statistics from a connected client: the bulk
/// method GetStatisticsCollection read by the manifests, or, where a server
/// lacks the method, the statistics instances themselves.
class StatSampler
{
public:
    using Progress = std::function<void(const std::string&)>;

    StatSampler(Pegasus::CIMClient& client, const Pegasus::CIMNamespaceName& nameSpace,
                std::vector<uint16_t> elementTypes);

    /// Throws what the client throws (the caller tells a server that stops
    /// answering from one that refuses).
    Sample take(const Progress& progress);

    bool usesMethod() const
    {
        return _useMethod;
    }
    size_t rejectedRecords() const
    {
        return _rejected;
    }

private:
    void _prepare(const Progress& progress);
    void _byMethod(Sample& sample, const Progress& progress);
    void _byInstances(Sample& sample, const Progress& progress);

    Pegasus::CIMClient& _client;
    Pegasus::CIMNamespaceName _nameSpace;
    std::vector<uint16_t> _types;
    bool _prepared = false;
    bool _useMethod = false;
    ManifestOrder _order;
    Pegasus::CIMObjectPath _service;
    size_t _rejected = 0;
};

} // namespace orvstat

#endif
