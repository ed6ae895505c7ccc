// Stands in for the launcher in small packages: needs nothing beside it, and says that it was started.
int main() {
    return 42;
}
