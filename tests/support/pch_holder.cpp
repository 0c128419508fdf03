// Carries the tests' precompiled header (see tests/CMakeLists.txt); never run.
int main() { return 0; }
