#ifndef ORV_TESTS_STATS_StatsTestSupport_h
#define ORV_TESTS_STATS_StatsTestSupport_h

// Helpers shared by the statistical-data tests: typed property access, the
// hand-written model, semaphore bookkeeping and providers called directly as
// the server calls them.

#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "ModuleFixture.h"
#include "ORV_Common.h"
#include "orvsim.h"

namespace orvstats
{

using namespace Pegasus;

inline std::string modelPath(const char* file)
{
    return std::string(ORV_SOURCE_ROOT) + "/Providers/ORV/tests/stats/models/" + file;
}

inline void loadModelFile(const char* file)
{
    ASSERT_EQ(0, orvsim_load_model_file(modelPath(file).c_str())) << orvsim_last_error();
}

// The property's value; fails the test when the instance lacks it.
inline CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos == PEG_NOT_FOUND)
    {
        ADD_FAILURE() << "no property " << name;
        return CIMValue();
    }
    return instance.getProperty(pos).getValue();
}

inline bool hasProperty(const CIMInstance& instance, const char* name)
{
    return instance.findProperty(CIMName(name)) != PEG_NOT_FOUND;
}
template <class T>
T get(const CIMInstance& instance, const char* name)
{
    CIMValue v = valueOf(instance, name);
    T out = T();
    if (v.isNull())
    {
        ADD_FAILURE() << name << " is null";
        return out;
    }
    v.get(out);
    return out;
}

inline std::string text(const CIMInstance& i, const char* name)
{
    return orvtest::str(get<String>(i, name));
}
inline std::string dateOf(long seconds)
{
    return orvtest::str(ORV_Common::getCIMDateTime(seconds).toString());
}
inline std::string date(const CIMInstance& i, const char* name)
{
    return orvtest::str(get<CIMDateTime>(i, name).toString());
}

inline std::string instanceIdOf(const CIMObjectPath& path)
{
    String id;
    ORV_Common::findFirstKey(path, CIMName("InstanceID"), id);
    return orvtest::str(id);
}

// Every wait matched by a post from the same thread, nothing held, no query
// outside the semaphore.
inline void expectSemaphoreBalanced()
{
    EXPECT_EQ(0, orvsim_sem_depth());
    EXPECT_EQ(orvsim_sem_waits(), orvsim_sem_posts());
    EXPECT_EQ(0ul, orvsim_sem_bad_posts());
    EXPECT_EQ(0ul, orvsim_unbracketed_calls());
    EXPECT_LE(orvsim_sem_max_depth(), 1);
}

// A provider of the module created and initialized as the server does, and
// terminated when the holder goes.
class DirectProvider
{
public:
    explicit DirectProvider(const char* name)
        : _provider(orvtest::createProvider(name))
    {
        if (!_provider)
        {
            ADD_FAILURE() << "no provider " << name;
            return;
        }
        CIMOMHandle handle = orvtest::sharedObjectManager().handle();
        _provider->initialize(handle);
    }
    ~DirectProvider()
    {
        if (_provider)
        {
            _provider->terminate();
        }
    }
    DirectProvider(const DirectProvider&) = delete;
    DirectProvider& operator=(const DirectProvider&) = delete;

    CIMInstanceProvider& instances()
    {
        return *dynamic_cast<CIMInstanceProvider*>(_provider);
    }

private:
    CIMProvider* _provider;
};

} // namespace orvstats

#endif
