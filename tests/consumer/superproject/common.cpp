int valueOfTheSuperproject()
{
    return 1;
}
