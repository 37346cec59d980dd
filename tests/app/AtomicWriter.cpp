// Replaces a file by one of the given number of bytes, for tests that kill it at each step.
#include "app/AtomicFile.h"

int main(int, char **argv)
{
    const QByteArray contents(QByteArray(argv[2]).toLongLong(), 'n');
    return Tessaron::Desktop::writeAtomically(argv[1], contents) ? 1 : 0;
}
