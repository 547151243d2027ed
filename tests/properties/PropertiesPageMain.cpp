// Prints docs/properties.md.
#include "properties/PropertiesPage.h"

#include <iostream>

int main()
{
    std::cout << lumora::PropertiesPage() << std::flush;
    return std::cout ? 0 : 1;
}
