#include <QCoreApplication>

int main(int count, char** arguments)
{
    const QCoreApplication application(count, arguments);
}
