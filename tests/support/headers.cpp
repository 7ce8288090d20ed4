// An empty program: its target builds the precompiled headers of the tests.
int main() {}
