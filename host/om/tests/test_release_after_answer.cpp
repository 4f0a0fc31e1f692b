// What a streamed enumeration delivered is let go when the request's hold
// goes, not before; only the latest delivery is held, and only while a hold
// exists on the delivering thread.

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Sdk/Ownership.h>
#include <cimom/ObjectManager.h>

PEGASUS_USING_PEGASUS;

namespace
{

Array<CIMInstance> delivery()
{
    Array<CIMInstance> out;
    for (int i = 0; i < 3; i++)
    {
        CIMInstance inst(CIMName("Test_Stats"));
        inst.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String("id"))));
        out.append(inst);
    }
    return out;
}

// Whether anything but `probe` still holds its object: a change made through
// an exclusive handle then goes into a copy and does not show in `probe`.
bool heldElsewhere(const CIMInstance& probe)
{
    CIMInstance exclusive = Sdk::exclusiveInstance(probe);
    exclusive.setPath(CIMObjectPath("Test_Stats.InstanceID=\"changed\""));
    const bool elsewhere = probe.getPath().toString() != exclusive.getPath().toString();
    return elsewhere;
}

// Delivers a fresh array as a provider would, lets the provider's array go,
// and returns a handle to one of its instances.
CIMInstance deliverAndDrop()
{
    Array<CIMInstance> providers = delivery();
    cimom::ReleaseAfterAnswer::keep(providers);
    return providers[1];
}

} // namespace

TEST(ReleaseAfterAnswer, HoldsTheLatestDeliveryUntilItGoes)
{
    // No hold on this thread: nothing is kept.
    EXPECT_FALSE(heldElsewhere(deliverAndDrop()));

    CIMInstance kept;
    {
        cimom::ReleaseAfterAnswer hold;
        CIMInstance first = deliverAndDrop();
        EXPECT_TRUE(heldElsewhere(first));

        // A second delivery replaces the first.
        CIMInstance second = deliverAndDrop();
        EXPECT_FALSE(heldElsewhere(first));
        EXPECT_TRUE(heldElsewhere(second));

        // Another thread's deliveries are not this hold's.
        std::thread other([] { EXPECT_FALSE(heldElsewhere(deliverAndDrop())); });
        other.join();
        EXPECT_TRUE(heldElsewhere(second));

        // An inner hold takes what is delivered while it exists, and lets
        // it go when it goes; the outer one keeps what it had.
        {
            cimom::ReleaseAfterAnswer inner;
            first = deliverAndDrop();
            EXPECT_TRUE(heldElsewhere(first));
        }
        EXPECT_FALSE(heldElsewhere(first));
        EXPECT_TRUE(heldElsewhere(second));
        kept = second;
    }
    // The hold went with the answer: `kept` is all that is left.
    EXPECT_FALSE(heldElsewhere(kept));
}
