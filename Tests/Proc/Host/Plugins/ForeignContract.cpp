// Stands for a library of the contract as another version had it.
__attribute__((visibility("default"))) int GetContract();
int GetContract() { return 7; }
