int foreign();

int foreign() {
    return 0;
}
