// What every C++ program contains.
#include <cstdio>

int main() { std::puts("nothing"); }
