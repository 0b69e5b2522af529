#include "apps/thermal/Program.h"

int main(int argc, char** argv)
{
    return thermal::runProgram(argc, argv);
}
