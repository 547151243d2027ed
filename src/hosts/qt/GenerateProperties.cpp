// Prints the header ViewportProperties.h: the meta-object compiler expands no macros, so what it reads is written out
// from the tables before it runs.
#include <iostream>
#include <string>

namespace
{

struct Enumeration
{
    std::string name;
    std::string enumerators;
};

struct Property
{
    std::string name;
    std::string type;
    bool writable;
    bool saved;
    std::string help;
};

#define LUMORA_VALUE(name, value) #name " = " #value ", "
#define LUMORA_ENUMERATION(name, help, values) {#name, values},
const Enumeration Enumerations[] = {
#include "properties/Enumerations.def"
};

constexpr bool None = false;
constexpr bool Plain = true;
constexpr bool Trapped = true;
constexpr bool Ignored = true;
constexpr bool Custom = true;
constexpr bool Saved = true;
constexpr bool NotSaved = false;
constexpr bool Hidden = false;
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help) {#name, #type, writer, saved, help},
const Property Properties[] = {
#include "properties/PropertyTable.def"
};

// Singles are doubles in forms, whose editors know no others.
std::string QtType(const std::string& type)
{
    const std::string pointer = "std::shared_ptr<";
    if (type == "float")
        return "double";
    if (type == "std::int32_t" || type == "std::int16_t")
        return "int";
    if (type == "std::string")
        return "QString";
    if (type == pointer + "Picture>")
        return "QPixmap";
    if (type.starts_with(pointer) && !type.starts_with(pointer + "lumora::"))
        return pointer + "lumora::" + type.substr(pointer.size());
    return type;
}

void PrintDeclaration(const Property& property)
{
    const std::string& name = property.name;
    std::cout << "    Q_PROPERTY(" << QtType(property.type) << ' ' << name << " READ " << name;
    if (property.writable)
        std::cout << " WRITE set" << name;
    std::cout << " NOTIFY " << name << "Changed";
    if (!property.saved)
        std::cout << " DESIGNABLE false STORED false";
    std::cout << ")\n";
}

void PrintEnumerations()
{
    std::cout << "#ifdef Q_MOC_RUN\n";
    for (const Enumeration& enumeration : Enumerations)
        std::cout << "    enum " << enumeration.name << " { " << enumeration.enumerators << "};\n";
    std::cout << "#else\n";
    for (const Enumeration& enumeration : Enumerations)
        std::cout << "    using " << enumeration.name << " = lumora::" << enumeration.name
                  << ";\n    using enum lumora::" << enumeration.name << ";\n";
    std::cout << "#endif\n";
    for (const Enumeration& enumeration : Enumerations)
        std::cout << "    Q_ENUM(" << enumeration.name << ")\n";
}

// Q_ENUM defines these as friends of the widget, where nobody looks for them who has an enumeration of another class:
// declared again, values of properties know their names.
void PrintEnumerationLookup()
{
    std::cout << "\n#ifndef Q_MOC_RUN\n";
    for (const Enumeration& enumeration : Enumerations)
        std::cout << "constexpr const QMetaObject* qt_getEnumMetaObject(" << enumeration.name << ") noexcept;\n"
                  << "constexpr const char* qt_getEnumName(" << enumeration.name << ") noexcept;\n";
    std::cout << "#endif\n";
}

} // namespace

int main()
{
    std::cout << R"(// Every property of the control as a Qt property. Made from the property table: edit that.
#pragma once

#include "viewport/Viewport.h"

#include <QPixmap>
#include <QString>
#include <QWidget>
#include <functional>
#include <string_view>

namespace lumora
{

/// Readers and writers never throw: what fails is told by the widget's signal Failed.
class ViewportProperties : public QWidget
{
    Q_OBJECT
)";
    for (const Property& property : Properties)
        PrintDeclaration(property);
    std::cout << "\npublic:\n";
    PrintEnumerations();
    std::cout << '\n';
    for (const Property& property : Properties)
        std::cout << "    " << QtType(property.type) << ' ' << property.name << "() const; ///< " << property.help
                  << '\n';
    std::cout << "\npublic Q_SLOTS:\n";
    for (const Property& property : Properties)
        if (property.writable)
            std::cout << "    void set" << property.name << '(' << QtType(property.type) << " value);\n";
    std::cout << "\nQ_SIGNALS:\n";
    for (const Property& property : Properties)
        std::cout << "    void " << property.name << "Changed();\n";
    std::cout << R"(
protected:
    using QWidget::QWidget;
    using Access = std::function<void(Viewport&)>;

    /// Runs `access` on the control; answers whether it did not fail.
    virtual bool Reach(const Access& access) const = 0;
    virtual void Write(const char* property, const Access& access) = 0;

    /// Sends the signal that the property of this name changed.
    void TellChanged(std::string_view name);
};
)";
    PrintEnumerationLookup();
    std::cout << "\n} // namespace lumora\n";
}
