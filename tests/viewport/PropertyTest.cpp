// Properties through the table that makes them.
#include "properties/PropertyTable.h"
#include "properties/PropertyValues.h"
#include "viewport/LiveControl.h"

#include <gmock/gmock.h>

using namespace lumora;
using namespace lumora::test;

namespace
{

TEST(Properties, every_saved_property_survives_a_bag_live_and_at_design_time)
{
    for (const bool live : {false, true})
    {
        MemoryPropertyBag bag;
        {
            MemoryPropertyBag empty;
            const auto hosted = live ? headless::HostedViewport::Live(MakeHost(), empty)
                                     : headless::HostedViewport::AtDesignTime(MakeHost(), empty);
            for (const PropertyRow& row : PropertyTable())
                if (row.saved)
                    row.write(hosted->Control(), AnotherValue(row));
            ASSERT_EQ(hosted->Control().ViewportState(), tdlRunning);
            hosted->Control().Save(bag);
        }
        EXPECT_EQ(bag.Entries().size(), 83U);
        EXPECT_EQ(bag.Entries().front().first, "MouseNavigationMode");
        const auto hosted = live ? headless::HostedViewport::Live(MakeHost(), bag)
                                 : headless::HostedViewport::AtDesignTime(MakeHost(), bag);
        ASSERT_EQ(hosted->Control().ViewportState(), tdlRunning);
        for (const PropertyRow& row : PropertyTable())
        {
            if (!row.saved)
                continue;
            EXPECT_TRUE(VariantsEqual(row.read(hosted->Control()), AnotherValue(row))) << row.name;
        }
        EXPECT_EQ(hosted->Control().Direct3DDeviceGUID(), "IID_IDirect3DRefDevice");
    }
}

TEST(Properties, defaults_are_not_saved_and_initialising_equals_loading_nothing)
{
    MemoryPropertyBag empty;
    const auto loaded = headless::HostedViewport::AtDesignTime(MakeHost(), empty);
    MemoryPropertyBag bag;
    loaded->Control().Save(bag);
    EXPECT_TRUE(bag.Entries().empty());

    const auto host = MakeHost();
    host->SetUserMode(false);
    headless::HostedViewport initialised{host};
    initialised.Control().Initialise();
    for (const PropertyRow& row : PropertyTable())
    {
        if (row.type == PropertyType::Object || row.name == "hwnd")
            continue;
        EXPECT_TRUE(VariantsEqual(row.read(initialised.Control()), row.read(loaded->Control()))) << row.name;
    }
    EXPECT_FLOAT_EQ(initialised.Control().KeyVelocityRotate(), 1.571F);
}

} // namespace
