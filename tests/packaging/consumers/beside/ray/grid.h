#pragma once

struct HostGrid {};
