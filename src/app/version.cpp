// The program has no option that prints its version; `strings` and `what` find it.
namespace {

[[gnu::used]] constexpr char kVersion[] = "@(#)tarvo-config " TARVO_VERSION;

}  // namespace
