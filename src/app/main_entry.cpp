#include "app/startup.h"

#include <QFile>
#include <QStringList>

int main(int argc, char **argv)
{
    return argc + (argv != nullptr);
}
