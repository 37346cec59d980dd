// Replaces a file by so many letters, for tests that kill it on its way.
#include "app/AtomicFile.h"

int main(int, char **argv)
{
    const QByteArray contents(QByteArray(argv[2]).toLongLong(), 'n');
    return Tessaron::Desktop::writeAtomically(argv[1], contents) ? 1 : 0;
}
