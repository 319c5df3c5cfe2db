// A program that exists to have the headers compiled once that every test includes.
int main() {}
