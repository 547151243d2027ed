// What a form says of viewports that they cannot take.
#pragma once

#include <QIODevice>
#include <QStringList>

namespace lumora
{

/// One sentence, with the line, for each property of a viewport in the form (the text of a .ui file) that viewports do
/// not have, or whose value they cannot hold. Qt leaves such values out, most of them without a word. An unreadable
/// form is one sentence too.
QStringList FormMistakes(QIODevice& form);

} // namespace lumora
