// lumora-render: pictures of models and scenes, drawn by the control without a desktop.
#include "lumora-render/Program.h"

int main(int argc, char** argv)
{
    return lumora::render::Run(argc, argv);
}
