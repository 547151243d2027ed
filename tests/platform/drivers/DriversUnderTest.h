// The drivers of this library by name, for tests that each of them must pass.
#pragma once

#include "platform/drivers/Driver.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace lumora::test
{

struct NamedDriver
{
    std::string name;
    std::function<std::unique_ptr<Driver>()> create;
    bool isMonochrome = false;

    friend std::ostream& operator<<(std::ostream& out, const NamedDriver& self) { return out << self.name; }
};

/// Those that are compared with the reference.
std::vector<NamedDriver> ProductionDrivers();

/// The reference and those that draw with colored light.
std::vector<NamedDriver> ColorDrivers();

/// A test that every driver must pass.
class EveryDriver : public ::testing::TestWithParam<NamedDriver>
{
protected:
    std::unique_ptr<Driver> driver_ = GetParam().create();
};

} // namespace lumora::test

/// Makes the tests of a class derived from EveryDriver run for each color driver.
#define LUMORA_FOR_EVERY_DRIVER(fixture)                                                                               \
    INSTANTIATE_TEST_SUITE_P(Drivers, fixture, ::testing::ValuesIn(::lumora::test::ColorDrivers()),                    \
                             [](const auto& suite) { return suite.param.name; })
