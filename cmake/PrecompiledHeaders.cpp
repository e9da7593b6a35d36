// What a precompiled header is built along with, under the flags that its users have. Nobody runs it.
int main() { return 0; }
