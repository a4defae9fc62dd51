#include <unistd.h>

/// Stands in for a program that paints a background: it only stays, whatever its arguments are. Forgotten, it ends.
int main()
{
    alarm(120);
    pause();
}
