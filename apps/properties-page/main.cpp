// Prints docs/properties.md.
#include "properties-page/PropertiesPage.h"

#include <iostream>

int main()
{
    std::cout << lumora::PropertiesPage() << std::flush;
    return std::cout ? 0 : 1;
}
