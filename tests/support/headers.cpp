// Nothing of its own: its target holds the precompiled headers of the tests.
int main() {}
