#pragma once

namespace plat {

// NSUserDefaults standardUserDefaults. Values of specifier rows are stored by the list
// controller; synchronize only has to be there and be seen (it is journaled).
class UserDefaults {
  public:
    static UserDefaults& standardUserDefaults();
    bool synchronize();
};

}  // namespace plat
