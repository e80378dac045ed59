#include "mappingfixture.h"
int main() {}
