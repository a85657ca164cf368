#include "Tools/velnor/CommandLine.h"

int main(int argumentsCount, char** arguments) { return Velnor::Tool::RunCommandLine(argumentsCount, arguments); }
