// Linked with the whole archive of the core, so that all that any part of it needs of the system
// shows in what this program needs.
int main() {}
