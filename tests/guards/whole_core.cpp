// Linked with the whole archive of the core, so that this program needs every library that any part
// of the core needs.
int main() {}
