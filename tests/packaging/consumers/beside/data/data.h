#pragma once

struct HostData {};
