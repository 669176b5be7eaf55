// Starts, prints one line and ends: the cost of any dynamically linked C++ program.
#include <iostream>

int main() {
    std::cout << "nothing\n";
}
