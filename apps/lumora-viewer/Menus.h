// The viewer's menus and tool bar.
#pragma once

namespace lumora::viewer
{

class MainWindow;

void BuildMenus(MainWindow& window);

} // namespace lumora::viewer
