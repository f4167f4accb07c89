// Stands in for the program that a menu starts: writes its arguments and what it was given to read into a
// file, whose name is that of its bundle. The file appears whole.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

int main(int count, char** arguments) {
  std::string bundle;
  std::string record;
  for (int at = 1; at < count; ++at) {
    if (std::string(arguments[at - 1]) == "--bundle") bundle = arguments[at];
    record.append(arguments[at]).push_back('\n');
  }
  record.push_back('\n');
  record.append(std::istreambuf_iterator<char>(std::cin), {});
  std::ofstream(bundle + ".part", std::ios::binary) << record;
  return std::rename((bundle + ".part").c_str(), bundle.c_str());
}
