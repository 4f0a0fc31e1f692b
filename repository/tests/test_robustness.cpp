// Damaged MOF must end in a MofError, never a crash or another exception; a loaded repository
// serves concurrent readers.

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/CIMProperty.h>

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

using namespace Pegasus;
using namespace cimrepo;

namespace
{

const CIMNamespaceName ns("root/test");

const char* const sample =
    R"(Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);
// comment
[Abstract, Description ("base " "class"), ValueMap {"1", "0x10"}]
class Base
{
    [Key] string Id = "a\"b\x41";
    uint8 Small[4] = {1, 0x2, 011, 101b};
    real64 R = -1.5e3;
    char16 C = '\n';
    datetime D = "00000001020304.000000:000";
    uint32 Do([IN] string A[], [OUT] Base REF B);
};
[Association] class Link { [Key] Base REF L; [Key] Base REF R; };
instance of Base as $b { Id = "x"; Small = {7}; };
instance of Link { L = $b; R = "Base.Id=\"y\""; };
)";

void compileExpectingOnlyMofErrors(const std::string& text, const std::string& what)
{
    ClassRepository repo;
    MofCompiler compiler(repo);
    try
    {
        compiler.compileString(text, "damaged.mof", ns);
    }
    catch (const MofError& e)
    {
        EXPECT_EQ("damaged.mof", e.file());
        EXPECT_GE(e.line(), 1) << what;
    }
    catch (const std::exception& e)
    {
        ADD_FAILURE() << what << ": std::exception " << e.what();
    }
    catch (...)
    {
        ADD_FAILURE() << what << ": unexpected exception type";
    }
}

} // namespace

TEST(Robustness, SampleCompilesWhole)
{
    ClassRepository repo;
    MofCompiler compiler(repo);
    compiler.compileString(sample, "sample.mof", ns);
    EXPECT_EQ(2u, compiler.classCount());
    EXPECT_EQ(2u, compiler.instances().size());
}

TEST(Robustness, EveryTruncationFailsCleanly)
{
    std::string text(sample);
    for (std::size_t n = 0; n < text.size(); ++n)
    {
        compileExpectingOnlyMofErrors(text.substr(0, n), "truncated at " + std::to_string(n));
    }
}

TEST(Robustness, RandomDamageFailsCleanly)
{
    std::mt19937 rng(20240611);
    const std::string noise = "{}[]();:=,\"'$#/*-+.0x1bAz\n\\ ";
    std::string text(sample);
    for (int round = 0; round < 2000; ++round)
    {
        std::string damaged = text;
        int edits = 1 + rng() % 4;
        for (int e = 0; e < edits; ++e)
        {
            std::size_t pos = rng() % damaged.size();
            switch (rng() % 3)
            {
            case 0:
                damaged[pos] = noise[rng() % noise.size()];
                break;
            case 1:
                damaged.erase(pos, 1 + rng() % 8);
                break;
            default:
                damaged.insert(pos, 1, noise[rng() % noise.size()]);
                break;
            }
            if (damaged.empty())
            {
                damaged = "x";
            }
        }
        compileExpectingOnlyMofErrors(damaged, "round " + std::to_string(round));
    }
}

TEST(Robustness, ConcurrentReadersSeeTheSameClasses)
{
    ClassRepository repo;
    MofCompiler compiler(repo);
    compiler.compileString(sample, "sample.mof", ns);
    for (int i = 0; i < 20; ++i)
    {
        compiler.compileString("class Sub" + std::to_string(i) + " : Base { string P" +
                                   std::to_string(i) + "; };",
                               "more.mof", ns);
    }
    const Uint32 expectedProperties =
        repo.getClass(ns, CIMName("Sub7"), false, true, true, CIMPropertyList()).getPropertyCount();

    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < 300; ++i)
                {
                    CIMClass c =
                        repo.getClass(ns, CIMName(("Sub" + std::to_string((i + t) % 20)).c_str()),
                                      i % 2 == 0, true, true, CIMPropertyList());
                    Uint32 want = i % 2 == 0 ? 1 : expectedProperties;
                    if (c.getPropertyCount() != want ||
                        repo.enumerateClassNames(ns, CIMName("Base"), true).size() != 20 ||
                        !repo.isSubClassOf(ns, c.getClassName(), CIMName("Base")))
                    {
                        ++mismatches;
                    }
                }
            });
    }
    for (std::thread& th : threads)
    {
        th.join();
    }
    EXPECT_EQ(0, mismatches.load());
}
