#include <cstdio>
#include "norvik.h"
int main() { return 0; }
