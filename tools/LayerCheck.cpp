// Linked with every object of one layer and only the layers below it: the
// program exists so that the linker refuses a call that runs up a layer.
int main() { return 0; }
