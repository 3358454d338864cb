#include "app/run.h"

int main(int argc, char** argv) { return vistel::runVistel(argc, argv); }
