#include "hosts/qt/FormMistakes.h"

#include "base/RuntimeError.h"
#include "hosts/qt/ViewportWidget.h"
#include "properties/PropertyTable.h"

#include <QXmlStreamReader>
#include <vector>

namespace lumora
{

namespace
{

// The sentence about a value of a known property; empty when it is one.
QString MistakeInValue(const PropertyRow& row, QStringView kind, const QString& text)
{
    if (row.type == PropertyType::Object)
        return kind == u"pixmap" && row.saved ? QString{}
                                              : QStringLiteral("%1 cannot be set in a form").arg(row.name.data());
    const bool isScoped = kind == u"enum" || kind == u"set";
    const std::string value = (isScoped ? text.section(QStringLiteral("::"), -1) : text).trimmed().toStdString();
    try
    {
        ParsePropertyValue(row, value);
        return {};
    }
    catch (const RuntimeError& failure)
    {
        return QString::fromStdString(failure.Description());
    }
}

class FormReader
{
public:
    explicit FormReader(QIODevice& form) : xml_(&form) {}

    QStringList Mistakes()
    {
        while (!xml_.atEnd())
        {
            xml_.readNext();
            if (xml_.isStartElement() && xml_.name() == u"widget")
                isViewport_.push_back(xml_.attributes().value(QLatin1StringView{"class"}) ==
                                      QLatin1StringView{ViewportWidget::staticMetaObject.className()});
            else if (xml_.isEndElement() && xml_.name() == u"widget")
                isViewport_.pop_back();
            else if (xml_.isStartElement() && xml_.name() == u"property" && !isViewport_.empty() && isViewport_.back())
                ReadProperty();
        }
        if (xml_.hasError())
            Say(xml_.errorString());
        return mistakes_;
    }

private:
    void Say(const QString& sentence)
    {
        mistakes_ << QStringLiteral("Line %1: %2").arg(xml_.lineNumber()).arg(sentence);
    }

    void ReadProperty()
    {
        const std::string name = xml_.attributes().value(QLatin1StringView{"name"}).toString().toStdString();
        if (!xml_.readNextStartElement())
            return;
        const QString kind = xml_.name().toString();
        if (const PropertyRow* const row = FindProperty(name))
        {
            const QString text = xml_.readElementText(QXmlStreamReader::IncludeChildElements);
            if (const QString mistake = MistakeInValue(*row, kind, text); !mistake.isEmpty())
                Say(mistake);
        }
        else if (ViewportWidget::staticMetaObject.indexOfProperty(name.c_str()) < 0)
            Say(QStringLiteral("A viewport has no property %1; the nearest is %2")
                    .arg(QString::fromStdString(name),
                         QString::fromStdString(std::string{NearestProperty(name).name})));
    }

    QXmlStreamReader xml_;
    std::vector<bool> isViewport_; // each widget around the place
    QStringList mistakes_;
};

} // namespace

QStringList FormMistakes(QIODevice& form)
{
    return FormReader{form}.Mistakes();
}

} // namespace lumora
