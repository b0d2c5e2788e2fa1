2t
#include "stdafx.h"
using namespace System::Reflection;
#define X 1
[assembly:AssemblyTitleAttribute(L"a\x41")];
[assembly:AssemblyVersionAttribute("1.0.*")];
