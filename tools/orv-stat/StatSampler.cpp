#include "StatSampler.h"

#include <Pegasus/Common/CIMDateTime.h>

#include <chrono>

using namespace Pegasus;

namespace orvstat
{

namespace
{

const CIMName MANIFEST_CLASS("CIM_BlockStatisticsManifest");
const CIMName SERVICE_CLASS("CIM_BlockStatisticsService");
const CIMName STATISTICS_CLASS("CIM_BlockStorageStatisticalData");
const CIMName METHOD_NAME("GetStatisticsCollection");

double _now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::string _std(const String& text)
{
    return std::string((const char*)text.getCString());
}

template <class T> bool _get(const CIMInstance& instance, const char* name, T& out)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos == PEG_NOT_FOUND)
    {
        return false;
    }
    CIMValue value = instance.getProperty(pos).getValue();
    if (value.isNull())
    {
        return false;
    }
    try
    {
        value.get(out);
        return true;
    }
    catch (const Exception&)
    {
        return false;
    }
}

bool _wanted(const std::vector<uint16_t>& types, uint16_t type)
{
    for (uint16_t t : types)
    {
        if (t == type)
        {
            return true;
        }
    }
    return false;
}

// Counters of the statistics classes that the rates use.
const char* const COUNTERS[] = {"TotalIOs",    "KBytesTransferred",  "IOTimeCounter", "ReadIOs",
                                "ReadHitIOs",  "ReadIOTimeCounter",  "KBytesRead",    "WriteIOs",
                                "WriteHitIOs", "WriteIOTimeCounter", "KBytesWritten"};

} // namespace

void connectClient(CIMClient& client, const ServerAddress& server, const std::string& user,
                   const std::string& password, const std::string& caCert)
{
    if (server.scheme == "https")
    {
        client.connect(server.host.c_str(), server.port, SSLContext(caCert.c_str(), nullptr),
                       user.c_str(), password.c_str());
    }
    else
    {
        client.connect(server.host.c_str(), server.port, user.c_str(), password.c_str());
    }
}

StatSampler::StatSampler(CIMClient& client, const CIMNamespaceName& nameSpace,
                         std::vector<uint16_t> elementTypes)
    : _client(client), _nameSpace(nameSpace), _types(std::move(elementTypes))
{
}

void StatSampler::_prepare(const Progress& progress)
{
    // The manifests fix the order of every record; they do not change while
    // the server runs, so they are read once.
    progress("reading the statistics manifests");
    Array<CIMInstance> manifests;
    Array<CIMObjectPath> services;
    try
    {
        manifests = _client.enumerateInstances(_nameSpace, MANIFEST_CLASS, true, false);
        services = _client.enumerateInstanceNames(_nameSpace, SERVICE_CLASS);
    }
    catch (const CIMException&)
    {
        manifests.clear();
        services.clear();
    }
    for (Uint32 i = 0; i < manifests.size(); ++i)
    {
        Uint16 type = 0;
        Array<String> sequence;
        if (_get(manifests[i], "ElementType", type) && _get(manifests[i], "CSVSequence", sequence))
        {
            std::vector<std::string>& names = _order[type];
            names.clear();
            for (Uint32 j = 0; j < sequence.size(); ++j)
            {
                names.push_back(_std(sequence[j]));
            }
        }
    }
    _useMethod = services.size() != 0 && !_order.empty();
    if (_useMethod)
    {
        _service = services[0];
    }
    _prepared = true;
}

Sample StatSampler::take(const Progress& progress)
{
    if (!_prepared)
    {
        _prepare(progress);
    }
    Sample sample;
    const double started = _now();
    if (_useMethod)
    {
        try
        {
            _byMethod(sample, progress);
        }
        catch (const CIMException& e)
        {
            if (e.getCode() != CIM_ERR_METHOD_NOT_AVAILABLE && e.getCode() != CIM_ERR_NOT_SUPPORTED)
            {
                throw;
            }
            progress("the server lacks GetStatisticsCollection; enumerating the statistics");
            _useMethod = false;
            sample = Sample();
        }
    }
    if (!_useMethod)
    {
        _byInstances(sample, progress);
    }
    sample.clockSeconds = (started + _now()) / 2;
    return sample;
}

void StatSampler::_byMethod(Sample& sample, const Progress& progress)
{
    // One call per element type: a large array's volumes or LUN paths take
    // a while, and the first sample reports each type as it arrives.
    for (uint16_t type : _types)
    {
        if (_order.count(type) == 0)
        {
            continue;
        }
        progress("sampling element type " + std::to_string(type));
        Array<Uint16> types;
        types.append(type);
        Array<CIMParamValue> in;
        in.append(CIMParamValue("ElementTypes", CIMValue(types)));
        Array<CIMParamValue> out;
        const double started = _now();
        _client.invokeMethod(_nameSpace, _service, METHOD_NAME, in, out);
        const double clock = (started + _now()) / 2;
        for (Uint32 i = 0; i < out.size(); ++i)
        {
            if (!String::equalNoCase(out[i].getParameterName(), "Statistics") ||
                out[i].getValue().isNull() || !out[i].getValue().isArray())
            {
                continue;
            }
            Array<String> texts;
            out[i].getValue().get(texts);
            for (Uint32 j = 0; j < texts.size(); ++j)
            {
                DecodeResult decoded = decodeRecords(_std(texts[j]), _order);
                _rejected += decoded.rejected;
                for (ElementSample& element : decoded.elements)
                {
                    element.clockSeconds = clock;
                    sample.elements[element.id] = element;
                }
            }
        }
        progress("element type " + std::to_string(type) + ": " +
                 std::to_string(sample.elements.size()) + " elements so far");
    }
}

void StatSampler::_byInstances(Sample& sample, const Progress& progress)
{
    progress("enumerating " + _std(STATISTICS_CLASS.getString()));
    Array<CIMInstance> found =
        _client.enumerateInstances(_nameSpace, STATISTICS_CLASS, true, false);
    for (Uint32 i = 0; i < found.size(); ++i)
    {
        ElementSample element;
        String id;
        if (!_get(found[i], "InstanceID", id) ||
            !_get(found[i], "ElementType", element.elementType) ||
            !_wanted(_types, element.elementType))
        {
            continue;
        }
        element.id = _std(id);
        CIMDateTime time;
        if (_get(found[i], "StatisticTime", time))
        {
            element.statisticTimeUs = parseCimDateTime(_std(time.toString()));
        }
        for (const char* name : COUNTERS)
        {
            Uint64 value = 0;
            if (_get(found[i], name, value))
            {
                element.counters[name] = value;
            }
        }
        Uint32 busy = 0;
        if (_get(found[i], "PercentBusy", busy))
        {
            element.percentBusy = static_cast<int>(busy);
        }
        sample.elements[element.id] = element;
    }
    progress(std::to_string(sample.elements.size()) + " elements");
}

} // namespace orvstat
