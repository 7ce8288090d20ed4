int main() {}  // an empty program: its target builds the precompiled headers of the tests
