#pragma once

struct HostVector {};
