// What a streamed enumeration delivered is let go when the request's hold
// goes, not before; only the latest delivery is held, and only while a hold
// exists on the delivering thread.

#include <gtest/gtest.h>

#include <malloc.h>

#include <thread>

#include <Pegasus/Common/CIMInstance.h>
#include <cimom/ObjectManager.h>

PEGASUS_USING_PEGASUS;

namespace
{

// Enough instances that their heap stands out from anything else the test does.
Array<CIMInstance> many()
{
    Array<CIMInstance> out;
    for (int i = 0; i < 2000; i++)
    {
        CIMInstance inst(CIMName("Test_Stats"));
        inst.addProperty(CIMProperty(CIMName("InstanceID"),
                                     CIMValue(String("an instance ID long enough to be counted"))));
        out.append(inst);
    }
    return out;
}

size_t heapInUse()
{
    return mallinfo2().uordblks;
}

// What `deliver` leaves held after the provider let go of its array.
size_t heldAfter(const std::function<void(Array<CIMInstance>&)>& deliver)
{
    const size_t before = heapInUse();
    {
        Array<CIMInstance> providers = many();
        deliver(providers);
    }
    const size_t after = heapInUse();
    return after > before ? after - before : 0;
}

const size_t MUCH = 200 * 1024; // 2000 instances take well over this

} // namespace

TEST(ReleaseAfterAnswer, HoldsTheLatestDeliveryUntilItGoes)
{
    // No hold on this thread: nothing is kept.
    EXPECT_LT(heldAfter([](Array<CIMInstance>& a) { cimom::ReleaseAfterAnswer::keep(a); }), MUCH);

    size_t held = 0;
    size_t afterHold = 0;
    const size_t start = heapInUse();
    {
        cimom::ReleaseAfterAnswer hold;
        held = heldAfter([](Array<CIMInstance>& a) { cimom::ReleaseAfterAnswer::keep(a); });
        // A second delivery replaces the first, which is freed then.
        const size_t second =
            heldAfter([](Array<CIMInstance>& a) { cimom::ReleaseAfterAnswer::keep(a); });
        EXPECT_LT(second, MUCH);

        // Another thread's deliveries are not this hold's.
        std::thread other([] {
            EXPECT_LT(heldAfter([](Array<CIMInstance>& a) { cimom::ReleaseAfterAnswer::keep(a); }),
                      MUCH);
        });
        other.join();

        // An inner hold takes what is delivered while it exists.
        {
            cimom::ReleaseAfterAnswer inner;
            EXPECT_GT(heldAfter([](Array<CIMInstance>& a) { cimom::ReleaseAfterAnswer::keep(a); }),
                      MUCH);
        }
    }
    afterHold = heapInUse();
    EXPECT_GT(held, MUCH);
    EXPECT_LT(afterHold > start ? afterHold - start : 0, MUCH);
}
