// The program whose build precompiles TestHeaders.h with the flags that test programs have. Nobody runs it.
int main() { return 0; }
