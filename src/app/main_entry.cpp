#include "actions/convertcommand.h"
#include "app/startup.h"

#include "engine/isolation.h"
#include "platform/filepath.h"

#include <QStringList>

int main(int argc, char **argv)
{
    // First of all: the process for the first picture comes up while the program does.
    startDecoderProcesses();
    // Before anything of Qt reads them: a name on the command line may hold bytes that are no text.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(pathFromBytes(argv[i]));
    const int status = Main(arguments);
    stopDecoderProcesses();
    endAsBySignal(status);
    return status;
}
