#include "apps/thermal/Interrupt.h"
#include "apps/thermal/Program.h"

int main(int argc, char** argv)
{
    thermal::endOnInterrupts();
    return thermal::runProgram(argc, argv);
}
