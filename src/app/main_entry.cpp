#include "app/startup.h"

#include "platform/filepath.h"

#include <QStringList>

int main(int argc, char **argv)
{
    // Before anything of Qt reads them: a name on the command line may hold bytes that are no text.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(pathFromBytes(argv[i]));
    return Main(arguments);
}
