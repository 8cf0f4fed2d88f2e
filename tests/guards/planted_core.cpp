int foreign();
int plantedPartOfTheCore();

int plantedPartOfTheCore() {
    return foreign();
}
