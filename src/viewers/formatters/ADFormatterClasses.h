#pragma once

/// Enters every formatter class in KZClassRegistry, so that resources can
/// name them. Call before making formatters by name; calling again is harmless.
void ADRegisterFormatterClasses();
